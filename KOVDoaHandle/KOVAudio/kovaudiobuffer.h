// One block of multichannel audio, shared by all who hold it.
#ifndef KOVDOA_KOVAUDIOBUFFER_H
#define KOVDOA_KOVAUDIOBUFFER_H

#include <QtCore/QMetaType>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// A handle, one pointer wide, onto channels x samples floats and a time stamp. Copies share the block: nothing
// is ever copied deeply, and what is written through one handle is seen through all.
class KOVDOA_EXPORT KOVAudioBuffer
{
public:
    KOVAudioBuffer();
    KOVAudioBuffer(const KOVAudioBuffer& other);
    ~KOVAudioBuffer();
    KOVAudioBuffer& operator=(const KOVAudioBuffer& other);
    KOVAudioBuffer& operator=(KOVAudioBuffer& other);

    void init(int channels, int samples);

    float** data();
    float* data(int channel);
    int samples();
    int channels();
    float timeStamp();
    void setTimeStamp(float milliseconds);

private:
    struct KOVDOA_LOCAL Block;
    Block* m_block;
};

Q_DECLARE_TYPEINFO(KOVAudioBuffer, Q_MOVABLE_TYPE);

#endif
