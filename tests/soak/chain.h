// Everything the library does for a host, round after round.
#ifndef KOVDOA_TESTS_SOAK_CHAIN_H
#define KOVDOA_TESTS_SOAK_CHAIN_H

#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

#include <memory>
#include <string>

#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>
#include <KOVDoaHandle/api/handles.h>
#include <KOVDoaHandle/imaging/kovtargettrack.h>
#include "tests/soak/beamformedblocks.h"
#include "tests/support/maps.h"

namespace soak {

struct Counts
{
    long long rounds = 0;
    long long frames = 0;
    long long patterns = 0;
    long long samplesHeard = 0;
};

// A host of an array of 208 microphones, in a folder of its own that is the working directory meanwhile.
class Chain
{
public:
    explicit Chain(const std::string& dischargeModels);
    ~Chain();
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;

    // Starts a reader and a recording; publishes, beamforms, renders, saves and tracks `frames` frames while another
    // thread listens and looks for discharges; ends both; plays the recording back. Files of the round before are
    // overwritten. Throws std::runtime_error when something is not as it should be.
    void playRound(int frames);

    const Counts& counts() const { return m_counts; }

private:
    void recordFrames(KOVHwMultAudio& reader, int frames);
    void imageOne(KOVAudioBuffer& block);
    void playBack(int frames);
    void measureGas();
    QString file(const char* name) const { return m_folder.filePath(QLatin1String(name)); }

    QTemporaryDir m_folder;
    QString m_folderBefore;
    std::unique_ptr<BeamformedBlocks> m_beamformer;
    std::unique_ptr<KOVDoaResultSerialize> m_recording;
    KOVTargetTrack m_tracks;
    testsupport::Image m_overlay = testsupport::makeImage(pictureHeight, pictureWidth);
    KOVOFFLineDoaObject* m_imager;
    KOVPrpdProcess* m_prpd;
    KOVGasleakProcess* m_gasLeak;
    Counts m_counts;
};

}  // namespace soak

#endif
