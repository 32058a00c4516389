// Any bytes as one file of a recording. Relations that must hold besides "nothing breaks": the file loads exactly when
// its header can be used and promises no more than there is, and the published block holds the file's own samples,
// zeros behind them, and nothing else.
#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <KOVDoaHandle/KOVAudio/arrayplayer_p.h>
#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>
#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>

namespace {

constexpr int channels = 8;
constexpr std::size_t headerBytes = 44;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "relation broken: %s\n", what);
    std::abort();
}

// The input read once more, as plainly as possible.
struct Input
{
    const std::uint8_t* bytes;
    std::size_t size;

    std::uint64_t field(std::size_t at, std::size_t width) const
    {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < width; ++i) {
            value |= std::uint64_t{bytes[at + i]} << (8 * i);
        }
        return value;
    }
    bool isUsable() const
    {
        return size >= headerBytes && field(22, 2) > 0 && field(34, 2) >= 8 &&
               field(40, 4) <= size - headerBytes;
    }
    std::uint64_t blockSize() const
    {
        const std::uint64_t rate = isUsable() ? field(24, 4) : 0;
        return rate == 192'000 ? 2048 : rate == 208'000 ? 2080 : 1024;
    }
    std::uint64_t blocks() const
    {
        return isUsable() ? field(40, 4) / field(22, 2) / (blockSize() * (field(34, 2) / 8)) : 0;
    }
    // Bits of a sample of the first block.
    std::uint64_t sample(std::size_t channel, std::size_t frame) const
    {
        const bool isHeld = isUsable() && field(34, 2) == 32 && frame < field(40, 4) / 32;
        return isHeld ? field(headerBytes + (frame * channels + channel) * 4, 4) : 0;
    }
};

void compareBlock(const Input& input, KOVAudioBuffer block)
{
    if (block.channels() != channels || static_cast<std::uint64_t>(block.samples()) != input.blockSize()) {
        fail("the block has another shape");
    }
    for (int channel = 0; channel < channels; ++channel) {
        for (int i = 0; i < block.samples(); ++i) {
            std::uint32_t bits = 0;
            std::memcpy(&bits, &block.data(channel)[i], sizeof bits);
            if (bits != input.sample(static_cast<std::size_t>(channel), static_cast<std::size_t>(i))) {
                fail("a sample differs");
            }
        }
    }
}

// What the worker does when it is woken, without the worker: a thread for every input would only be slow.
void publish(const Input& input, const QString& folder)
{
    const auto recording = std::make_shared<KOVAudio::WavSet>(channels, 96'000, 1024);
    recording->load(folder);
    const auto sources = std::make_shared<KOVAudio::SourceList>();
    KOVAudioSource source(QStringLiteral("fuzz"), 96'000, channels);
    sources->add(source);
    KOVAudio::ArrayPlayer player(recording, sources, 0);
    player.publish();
    compareBlock(input, source.readData().value<KOVAudioBuffer>());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static const QTemporaryDir folder;
    static const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    static_cast<void>(before);
    QFile file(folder.filePath(QStringLiteral("data-0.wav")));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        fail("no file to write");
    }
    file.write(reinterpret_cast<const char*>(bytes), static_cast<qint64>(size));
    file.close();
    const Input input{bytes, size};

    KOVHwMultAudio reader(channels);
    if (reader.init(folder.path().toUtf8()) != input.isUsable()) {
        fail("loaded, or refused, without a reason");
    }
    if (static_cast<std::uint64_t>(reader.getTotalDataFrame()) != input.blocks()) {
        fail("another number of blocks");
    }
    publish(input, folder.path());
    return 0;
}
