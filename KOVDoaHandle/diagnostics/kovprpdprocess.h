// Partial discharge: from a mono ultrasonic stream to a phase-resolved pattern and a verdict.
#ifndef KOVDOA_KOVPRPDPROCESS_H
#define KOVDOA_KOVPRPDPROCESS_H

#include <memory>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

enum PddMode : int { PDD_MODE_50HZ = 0, PDD_MODE_60HZ = 1 };

enum PddType : int { PDD_TYPE_NONE = 0 };

// What the polls since the last reset have found. Ten 32-bit slots, in this order.
struct PRPDResult
{
    float F1;                   // amplitude of the pattern's component at the mains frequency
    float F2;                   // and at twice the mains frequency
    float RMS;                  // noise floor
    float peak;                 // largest sample, at most 1
    float coronaPercent;        // share of the votes, 0 ... 100
    int coronaType;             // 1
    float alongSurfacePercent;  //
    int alongSurfaceType;       // 2
    float suspensionPercent;    //
    int suspensionType;         // 3
};

static_assert(sizeof(PRPDResult) == 40);

class KOVDOA_EXPORT KOVPrpdProcess
{
public:
    explicit KOVPrpdProcess(const char* dir);
    ~KOVPrpdProcess();
    KOVPrpdProcess(const KOVPrpdProcess&) = delete;
    KOVPrpdProcess& operator=(const KOVPrpdProcess&) = delete;

    void setPddMode(PddMode mode);
    PddMode getPddMode();
    int pageLength();
    int pageNumber();

    void FeedAudio(float* samples, int n);
    void audioInput(float* samples, int n);

    bool updatePdd();
    PRPDResult getPddFrameData(float* out, int capacity);
    void resetResult();

    bool checkPeak(float peak, float floor);
    void getPddData(float* in, float* out, int n);
    bool getPdd(float* frame, PddType& type);
    void processPdd50Hz(float* frame, PddType& type);
    void processPdd60Hz(float* frame, PddType& type);
    float RBF(float* x, float* sv, float gamma, int dim);
    void calculateFeatures();
    void checkPddType();

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
