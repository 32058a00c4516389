#include <KOVDoaHandle/api/prpd.h>

#include <atomic>

#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

namespace {

// The record that PRPDFrameData hands out may be rewritten by one thread while another reads it: slot by
// slot, each of them whole.
template <typename Slot>
void write(Slot& slot, Slot value)
{
    std::atomic_ref<Slot>(slot).store(value, std::memory_order_relaxed);
}

float read(float& slot)
{
    return std::atomic_ref<float>(slot).load(std::memory_order_relaxed);
}

}  // namespace

KOVPrpdProcess* CreatePRPDHandle(const char* dir)
{
    return new KOVPrpdProcess(dir);
}

void ReleasePRPDHandle(KOVPrpdProcess* prpd)
{
    delete prpd;
}

void PRPDSetPddMode(KOVPrpdProcess* prpd, int mode)
{
    prpd->setPddMode(static_cast<PddMode>(mode));
}

int PRPDGetPddMode(KOVPrpdProcess* prpd)
{
    return prpd->getPddMode();
}

void PRPDFeedAudio(KOVPrpdProcess* prpd, float* samples, int n)
{
    prpd->FeedAudio(samples, n);
}

bool PRPDUpdatePdd(KOVPrpdProcess* prpd)
{
    return prpd->updatePdd();
}

void PRPDReset(KOVPrpdProcess* prpd)
{
    prpd->resetResult();
}

int PRPDPageLength(KOVPrpdProcess* prpd)
{
    return prpd->pageLength();
}

int PRPDPageNumber(void)
{
    return 10;
}

PRPDResult* PRPDFrameData(KOVPrpdProcess* prpd, float* out, int capacity)
{
    static PRPDResult shared{};
    const PRPDResult result = prpd->getPddFrameData(out, capacity);
    write(shared.F1, result.F1);
    write(shared.F2, result.F2);
    write(shared.RMS, result.RMS);
    write(shared.peak, result.peak);
    write(shared.coronaPercent, result.coronaPercent);
    write(shared.coronaType, result.coronaType);
    write(shared.alongSurfacePercent, result.alongSurfacePercent);
    write(shared.alongSurfaceType, result.alongSurfaceType);
    write(shared.suspensionPercent, result.suspensionPercent);
    write(shared.suspensionType, result.suspensionType);
    return &shared;
}

float PRPDResultGetF1(PRPDResult* result)
{
    return read(result->F1);
}

float PRPDResultGetF2(PRPDResult* result)
{
    return read(result->F2);
}

float PRPDResultGetRMS(PRPDResult* result)
{
    return read(result->RMS);
}

float PRPDResultGetPeak(PRPDResult* result)
{
    return read(result->peak);
}

float PRPDResultGetCoronaPercent(PRPDResult* result)
{
    return read(result->coronaPercent);
}

float PRPDResultGetAlongSurfacePercent(PRPDResult* result)
{
    return read(result->alongSurfacePercent);
}

float PRPDResultGetSuspensionPercent(PRPDResult* result)
{
    return read(result->suspensionPercent);
}
