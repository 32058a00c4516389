// The imager: turns frames into a colour overlay for a camera picture.
#ifndef KOVDOA_KOVDOAOBJECT_H
#define KOVDOA_KOVDOAOBJECT_H

#include <memory>

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

struct EngMapResult;

// Life of an imager: construct, init() (mandatory before rendering), then setters in any order, then
// updateImagerRGB() once per frame.
//
// Threads: one thread at a time; only updateImagerRGB() calls on one object exclude each other. Setters do not take
// that lock: a host that reconfigures while another thread renders must serialise itself.
class KOVDOA_EXPORT KOVOFFLineDoaObject
{
public:
    // Palette of the overlay. Any other value renders like DOA_PALLET_BGR.
    enum DOA_PALLET_ID : int {
        DOA_PALLET_BGR = 0,   // rainbow, dark blue through green to dark red
        DOA_PALLET_BRYW = 1,  // black, red, yellow, white
        DOA_PALLET_GRAY = 2,  // grey, dark to white
    };

    // No region, dynamic range 3 dB, minimum level 1e-8, one cursor, scale 1, rainbow, picture 640 x 480.
    KOVOFFLineDoaObject();
    ~KOVOFFLineDoaObject();
    KOVOFFLineDoaObject(const KOVOFFLineDoaObject&) = delete;
    KOVOFFLineDoaObject& operator=(const KOVOFFLineDoaObject&) = delete;

    // Sets the sizes, clears the region masks and switches the log files on (initMessage).
    //   mapScaleA, mapScaleB  what setRadius() multiplies the region's relative half-axes by to get semi-axes in map
    //                         cells: A gives the semi-axis along the rows' index, B along the columns' index
    //   width, height         size of the camera picture and of the overlay, pixels
    // A value below 1 keeps the stored one (640, 480, 640, 480 at first). Always returns 1.
    // The region itself is not recomputed: call setRadius() with another radius, or setImageScale(), afterwards.
    int init(int mapScaleA, int mapScaleB, int width, int height);

    // Sets the region of interest, an ellipse around the middle of the picture with the half-axes
    //   X = width * radius / (p * k),  Y = radius * height / (k * q)          pixels; k from setImageScale()
    // and, in map cells, mapScaleA * X / width along the rows' index and Y * mapScaleB / height along the columns'.
    //   radius  0 or less: no region (getRadius() then returns -1). The radius already set: nothing happens.
    //   p, q    the size that radius is measured against
    // Throws cv::Exception when a half-axis is one pixel or less (the radius is stored, the region left empty).
    void setRadius(float radius, int p, int q);
    float getRadius();

    // Dynamic range of the colour scale, dB. Not checked.
    void setDynamic(float dynamic);
    float getDynamic();

    // Minimum level, linear, in the unit of the map: nothing below it is coloured, and it is the threshold of the
    // peak search. Not checked.
    void setMinPreSdLever(float level);
    float getMinPreSdLever();

    // Number of cursors (strongest peaks) to use.
    void setCursorNum(int count);
    int getCursorNum();

    // Several cursors: the map is replaced by a smooth bump around each cursor before it is coloured.
    void setMultCursorEnable(bool enable);
    bool getMultCursorEnable();

    // Colours the map outside the region of interest too (with a range of its own).
    void setIsImagerOutSideRadiusShow(bool enable);
    bool getIsImagerOutSideRadiusShow();

    void setPalletId(DOA_PALLET_ID palletId);
    DOA_PALLET_ID getPalletId();

    // Zoom s of the camera picture. Recomputes the region with the factor k that follows from it: k = s below 2,
    // (s - 2) / 2 + 1 from 2, (s - 4) / 4 + 1 from 4. The steps back to 1 at 2 and at 4 are deliberate.
    // With a region set it throws like setRadius() when the scale is not positive or leaves too small a region; the
    // scale is stored all the same.
    void setImageScale(float scale);
    float getImageScale();

    // Copies src's rows * cols cells into dst, row by row.
    void matcopy(mat2d_fp32* src, mat2d_fp32* dst);

    // Renders one frame.
    //   result  the frame; maxSpl and minSpl (with a region also the two Extern fields) are rewritten, relative to
    //           the map's median, and peaks are appended if it has none
    //   image   receives the overlay: picture height rows of picture width * 3 bytes, blue, green, red, row-major;
    //           black where nothing is shown. A smaller image receives the picture's first bytes, a larger one zeros
    //           behind them. The caller keeps owning it.
    // init() must have been called. A map without cells gives a black picture. Maps may change their size from frame
    // to frame. Timing: allocates two short lists of points, and more only when a size changes, several cursors are
    // on or a map has more than 16,384 cells; locks the object's render mutex.
    void updateImagerRGB(EngMapResult* result, mat1d_uint8* image);

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
