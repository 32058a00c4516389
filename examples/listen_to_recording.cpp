// A host that plays a recording of the microphone array: loads it, reads some blocks, prints the level of each.
//
//   kovdoa_example_listen_to_recording FOLDER CHANNELS BLOCKS
//
// Exits with 0 when all blocks have come and are not silent, 2 when it was called wrongly, otherwise 1.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <thread>

#include <KOVDoaHandle/KOVAudio/kovaudiobuffer.h>
#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>
#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>

namespace {

// Root of the mean square over all channels.
double levelOf(KOVAudioBuffer& block)
{
    double energy = 0.0;
    for (int channel = 0; channel < block.channels(); ++channel) {
        for (int i = 0; i < block.samples(); ++i) {
            energy +=
                static_cast<double>(block.data(channel)[i]) * static_cast<double>(block.data(channel)[i]);
        }
    }
    return std::sqrt(energy / (block.channels() * block.samples()));
}

// Wakes the reader until a block comes. One wake is usually enough, but one that meets a busy worker is lost.
KOVAudioBuffer nextBlock(KOVHwMultAudio& reader, KOVAudioSource& source, int index)
{
    QVariant read;
    while (!read.isValid()) {
        std::thread pacer([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            reader.setCurrentIndex(index);
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            source.onDataReady();  // whoever still waits is told that nothing has come
        });
        read = source.readData();
        pacer.join();
    }
    source.clearData();
    return read.value<KOVAudioBuffer>();
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::cerr << "usage: " << argv[0] << " FOLDER CHANNELS BLOCKS\n";
        return 2;
    }
    constexpr int mostChannels = 1024;
    const int channels = std::atoi(argv[2]);
    if (channels < 8 || channels > mostChannels) {
        std::cerr << "CHANNELS is a number from 8 to " << mostChannels << ", not '" << argv[2] << "'\n";
        return 2;
    }
    KOVHwMultAudio reader(channels);
    if (!reader.init(argv[1])) {
        std::cerr << "cannot load the recording in '" << argv[1] << "'\n";
        return 1;
    }
    // Sources are deleted through their own type: the interface has no virtual destructor.
    const std::unique_ptr<KOVAudioSource> source(
        dynamic_cast<KOVAudioSource*>(reader.createReaderSource(QStringLiteral("example"))));
    reader.start();
    const int blocks = std::min(std::atoi(argv[3]), static_cast<int>(reader.getTotalDataFrame()));
    double lowest = 1e9;
    for (int index = 0; index < blocks; ++index) {
        KOVAudioBuffer block = nextBlock(reader, *source, index);
        const double level = levelOf(block);
        std::cout << block.timeStamp() << " ms: " << level << '\n';
        lowest = std::min(lowest, level);
    }
    reader.close();
    reader.releaseReaderSource(source.get());
    return blocks > 0 && lowest > 0.0 ? 0 : 1;
}
