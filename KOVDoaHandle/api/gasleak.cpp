#include <KOVDoaHandle/api/gasleak.h>

#include <KOVDoaHandle/diagnostics/kovgasleakprocess.h>

KOVGasleakProcess* CreateGasLeakHandle(const char* tableFile)
{
    return new KOVGasleakProcess(tableFile);
}

void ReleaseGasLeakHandle(KOVGasleakProcess* gasLeak)
{
    delete gasLeak;
}

void GasLeakFeedData(KOVGasleakProcess* gasLeak, float distance, float reserved, float spl)
{
    gasLeak->FeedData(distance, reserved, spl);
}

float GasLeakGetLRQ(KOVGasleakProcess* gasLeak)
{
    return gasLeak->getLRQ();
}

float GasLeakGetGetLeak(KOVGasleakProcess* gasLeak)
{
    return gasLeak->getLeak();
}

int GasLeakGetGasLeakMode(KOVGasleakProcess* gasLeak)
{
    return gasLeak->getGasLeakMode();
}

void GasLeakSetGasLeakMode(KOVGasleakProcess* gasLeak, int mode)
{
    gasLeak->setGasLeakMode(static_cast<GASLEAK_MODE>(mode));
}
