// The instrument's ear: what listens to a source of the reader beside the imaging.
#ifndef KOVDOA_TESTS_SOAK_INSPECTION_H
#define KOVDOA_TESTS_SOAK_INSPECTION_H

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>
#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>
#include <KOVDoaHandle/KOVAudio/kovsuperheterodyne.h>
#include <KOVDoaHandle/api/prpd.h>

namespace soak {

// Drains a source of its own on a thread of its own, as long as it lives: into the superheterodyne monitor and into the
// discharge analysis.
class Inspection
{
public:
    Inspection(KOVHwMultAudio& reader, KOVPrpdProcess* prpd)
        : m_reader(reader),
          m_prpd(prpd),
          m_source(dynamic_cast<KOVAudioSource*>(reader.createReaderSource(QStringLiteral("inspection"))))
    {
        m_monitor.init();
        m_monitor.start();
        m_thread = std::thread([this] { listen(); });
    }
    ~Inspection()
    {
        m_isStopping = true;
        while (!m_hasStopped) {
            m_source->onDataReady();
            std::this_thread::yield();
        }
        m_thread.join();
        m_monitor.stop();
        m_reader.releaseReaderSource(m_source.get());
    }
    Inspection(const Inspection&) = delete;
    Inspection& operator=(const Inspection&) = delete;

    // Since the beginning.
    int patterns() const { return m_patterns; }
    long long heard() const { return m_heard; }

private:
    void listen()
    {
        std::vector<float> pattern(2400);
        for (int block = 0; !m_isStopping; ++block) {
            const QVariant read = m_source->readData();
            if (!read.isValid()) {
                continue;
            }
            auto samples = read.value<KOVAudioBuffer>();
            m_monitor.feedSignal(samples.data(0), samples.samples());
            PRPDFeedAudio(m_prpd, samples.data(1), samples.samples());
            int count = 0;
            m_monitor.readAll(count);
            m_heard += count;
            if (block % 10 == 0 && PRPDUpdatePdd(m_prpd)) {
                PRPDFrameData(m_prpd, pattern.data(), 2400);
                ++m_patterns;
            }
        }
        m_hasStopped = true;
    }

    KOVHwMultAudio& m_reader;
    KOVPrpdProcess* m_prpd;
    std::unique_ptr<KOVAudioSource> m_source;
    KOVSuperHeterodyne m_monitor;
    std::atomic<int> m_patterns{0};
    std::atomic<long long> m_heard{0};
    std::atomic<bool> m_isStopping{false};
    std::atomic<bool> m_hasStopped{false};
    std::thread m_thread;
};

}  // namespace soak

#endif
