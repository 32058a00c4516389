// Recordings: writes frames to a result file and loads result files. The format is described in
// docs/result-file.md.
#ifndef KOVDOA_KOVDOARESULTSERIALIZE_H
#define KOVDOA_KOVDOARESULTSERIALIZE_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <memory>

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

struct EngMapResult;

// Threads: one controlling thread; openResultFile() loads on a worker thread of its own, and
// IsOpenFileComplete(), getResultFrame(), getResultFromIndex() and the header getters may be polled
// meanwhile. Do not write and read with one object at once.
class KOVDOA_EXPORT KOVDoaResultSerialize
{
public:
    // Loaded frames will live in files in `cachePath`; "./cache/" when it is empty.
    explicit KOVDoaResultSerialize(const QString& cachePath);

    // Waits for a load that is still running (asking it to stop), then frees every frame.
    ~KOVDoaResultSerialize();

    KOVDoaResultSerialize(const KOVDoaResultSerialize&) = delete;
    KOVDoaResultSerialize& operator=(const KOVDoaResultSerialize&) = delete;

    // Begins a recording: creates (or empties) the file at `path` and writes the header.
    //   resRows, resCols  size of the energy maps;  imgRows, imgCols  size of the camera picture
    //   fftLen            FFT length; a spectrum has fftLen / 2 + 1 bins
    // Record numbers are not reset. A file that cannot be opened is not reported.
    void startSave(const QString& path, int resRows, int resCols, int imgRows, int imgCols, int fftLen);

    // Appends one record. The file is opened, flushed and closed in each call, so a recording ends by no
    // further call. Nothing is reported when it cannot be written; the record number advances all the same.
    // `result` is not checked and stays the caller's.
    void Save(EngMapResult* result);

    // Starts loading a recording on a worker thread and returns at once; IsOpenFileComplete() tells the end.
    // A file that is missing or is no recording gives no frames; from a damaged one every record before the
    // damage is kept. Frames of an earlier load stay in the list: use one load per object. The thread's own
    // object is deleted in the event loop of the calling thread; without one it stays, a few hundred bytes a load.
    void openResultFile(const QString& path);

    // True once the load has ended.
    bool IsOpenFileComplete();

    // Number of frames loaded so far.
    int getResultFrame();

    // What the header says; 64, 48, 480, 640 and 1024 until one has been read.
    int getResRows();
    int getResCols();
    int getImgRows();
    int getImgCols();
    int getFFTLen();

    // Version text of the loaded file, for example "0015"; empty until it has been read.
    QString getFileVersion();

    // The frame at `index`, owned by this object; null when there is none.
    EngMapResult* getResultFromIndex(int index);

    // The parsing steps of a load, on the whole file's bytes, from the object's read position on. Not while a
    // load runs.
    //
    // The text up to the next CR LF, which is skipped; without one, all that is left; at the end a null
    // array.
    QByteArray getLine(QByteArray& data);
    // `len` raw bytes, or as many as are left; then skips to behind the next CR LF.
    QByteArray getLine(QByteArray& data, int len);
    // Read the FILE_INFO and the STRUCT_INFO block. A first line that is none of theirs is consumed.
    void unpackVersion(QByteArray& data);
    void unpackHeader(QByteArray& data);
    // Reads one record and appends its frame. False when there is no further one.
    bool unpackResult(QByteArray& data);

    // Records of the boundary's layout whose elements live in the cache. Elements are zero. Null when memory
    // or the cache folder fails. A matrix has row pointers only where rows and cols are both positive.
    mat2d_fp32* my_create_mat2d_fp32(int rows, int cols);
    vec_fp32* my_create_vec_fp32(int len);
    // Free such a record; null is ignored.
    void my_destroy_mat2d_fp32(mat2d_fp32* matrix);
    void my_destroy_vec_fp32(vec_fp32* vector);

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
