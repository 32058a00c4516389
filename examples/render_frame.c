/* One frame from map to overlay, in plain C. Exits with 0 when the overlay shows the source. */
#include <KOVDoaHandle/KOVDoaHandle.h>

int main(void)
{
    KOVOFFLineDoaObject* imager = CreateDoaObject();
    EngMapResult* frame = createResultHandle(48, 64, 480, 640, 1024);
    mat1d_uint8* image = createMat1dUint8(480, 640 * 3);
    for (int i = 0; i < 5 * 5; ++i) /* a source around row 20, column 30 of the map */
        setMat2dFp32Value(getResEngMap(frame), 18 + i / 5, 28 + i % 5, 1.0F);
    DoaObjectInit(imager, 48, 64, 640, 480);
    DoaObjectUpdateImagerRGB(imager, frame, image);
    int red = getMat1dUint8Value(image, 205, 305 * 3 + 2); /* blue, green, red of the pixel at x 305, y 205 */
    destroyMat1dUint8(image);
    releaseResultHandle(frame);
    ReleaseDoaObject(imager);
    return red > 0 ? 0 : 1;
}
