// The multichannel audio reader: plays a recording of the microphone array to the sources that hosts create.
//
//   KOVHwMultAudio reader;
//   if (reader.init("recordings/leak")) {
//       auto* source = dynamic_cast<KOVAudioSource*>(reader.createReaderSource("view"));
//       reader.start();
//       reader.setCurrentIndex(0);                     // repeat until the worker has begun to wait
//       auto block = source->readData().value<KOVAudioBuffer>();
//       ...
//       reader.close();
//       reader.releaseReaderSource(source);
//       delete source;
//   }
#ifndef KOVDOA_KOVHWMULTAUDIO_H
#define KOVDOA_KOVHWMULTAUDIO_H

#include <QtCore/QObject>
#include <QtCore/QString>

#include <memory>

#include <KOVDoaHandle/KOVAudio/kovserver.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

// What a live device says about its FIFO. Nothing here looks into it.
struct hw_data_info;

// A recording is a folder of 8-channel WAV files, data-0.wav, data-1.wav ...: channels 0 to 7 of the array in the
// first, 8 to 15 in the second. Each has the canonical 44-byte header (taken by fixed offsets; magic words are not
// compared) and 32-bit floating-point samples. Its rate sets the size of the published blocks: 1024 samples per
// channel at 96 kHz, 2048 at 192 kHz, 2080 at 208 kHz; at other rates it stays as it was, 1024 at first.
//
// The host paces the reader: setCurrentIndex() wakes a worker thread, labelled "hwAudioRd", which hands one block of
// all channels to every source. By agreement with hosts its samples are always those at the recording's beginning;
// only the time stamp follows the index. Where a recording is shorter than a block, the rest of the block is zero.
//
// Threads: every member may be called from any thread while the object lives; loading is not cancelled. Sources may be
// created, taken back and deleted at any time, also while a block is on its way to them, and without being taken
// back. Call close() before destroying the reader: the destructor does not end the worker, which then waits for the
// rest of the process and keeps the recording in memory (it touches nothing of the destroyed object).
// Timing: publishing allocates nothing and copies one block, however many sources there are. Blocks come from a pool
// of 60, so a consumer that holds a block longer than 60 publications sees its samples overwritten.
class KOVDOA_EXPORT KOVHwMultAudio : public QObject, public IKOVCoreServer, public IKOVServerReader
{
    Q_OBJECT

public:
    // For the array of 208 channels.
    KOVHwMultAudio();
    // For an array of another size. Channels beyond the last whole eight have no file and stay silent.
    explicit KOVHwMultAudio(int channels);
    ~KOVHwMultAudio() override;

    // True from start() to close().
    bool isWorking() override;

    // Creates a KOVAudioSource that gets every block from now on. The caller owns it and deletes it through that type.
    IKOVServerReaderSource* createReaderSource(const QString& name) override;

    // The source gets no more blocks; it is not destroyed. Ignores null and whatever is not, or no longer, a source of
    // this reader; the pointer is only compared.
    void releaseReaderSource(IKOVServerReaderSource* source) override;

    // Starts the worker with the recording that is loaded; without one it publishes nothing. Does nothing while the
    // reader works. The worker takes a moment to begin waiting, and wakes until then are lost. When it has ended, the
    // calling thread's event loop frees its thread object (not the recording, which it gives back itself): called from
    // a thread without one, or one that ends before the worker, that little object stays.
    void start() override;

    // Ends the worker. If it is waiting it publishes one more block first.
    void close() override;

    // Loads the recording in `folder` (UTF-8) into memory. Returns false at once, and changes nothing, when the array
    // has fewer than 8 channels. Returns false after going through all files when one of them is missing, empty,
    // shorter than its header, or has a header with no channels, less than 8 bits a sample or more data than the file
    // holds; its channels are then silent, and hosts should not start the reader. Files of another sample size than 32
    // bits load, but their channels are silent.
    //
    // Called again, it replaces the recording. A worker that is running keeps the one it was started with.
    bool init(const char* folder);

    // Sets the index of the current block and wakes the worker, which publishes one block whose time stamp is
    // index x block size x 1000 / sample rate, in ms. A wake is lost while the worker is busy, or not started.
    void setCurrentIndex(int index);

    // Number of whole blocks in the shortest file that holds a whole block; 0 when none does.
    long long getTotalDataFrame();
    // The same in samples per channel.
    long long getTotalDataSize();

    // The controls of a live device, so that hosts written for one run on recordings too. They have no effect; the
    // getters and those that report success return true, the FIFO holds 0 bytes, and read_pcm_data leaves the buffer
    // as it is.
    void GPIO_1_Set(bool on);
    void GPIO_2_Set(bool on);
    void GPIO_3_Set(bool on);
    void GPIO_4_Set(bool on);
    void GPIO_Analog_Set(bool on);
    void GPIO_LED_Set(bool on);
    void GPIO_MIC_Set(bool on);
    bool GPIO_1_Get();
    bool GPIO_2_Get();
    bool GPIO_3_Get();
    bool GPIO_4_Get();
    bool GPIO_Analog_Get();
    bool GPIO_LED_Get();
    bool GPIO_MIC_Get();
    bool SetLast64ChannelMode(bool on);
    bool ModeOverFreqConfig(bool on);
    bool ModeFakeDataConfig(bool on);
    bool ModeBclkOutConfig(bool on);
    void ModeAnalogClkOutConfig(bool on);
    void ModeDigitalAnalogSwitch(bool on);
    void read_pcm_data(void* buffer, long long size);
    int get_fifo_data_size(hw_data_info* info);

private:
    struct KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
