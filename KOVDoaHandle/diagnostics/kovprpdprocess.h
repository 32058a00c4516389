// Partial discharge: from a mono ultrasonic stream to a phase-resolved pattern and a verdict.
//
// Insulation that is about to fail discharges at the same phases of every mains cycle. The stream is
// high-passed, its magnitude is gathered in bins of eight samples (12000 a second), and the bins of 30 mains
// cycles are laid over one another as ten pages of three cycles each. Where the bins repeat with the mains,
// the shape of the repetition tells the kind of discharge: once a cycle is corona; twice a cycle is a
// discharge along a surface or of a floating ("suspended") part, which a support-vector machine tells apart.
#ifndef KOVDOA_KOVPRPDPROCESS_H
#define KOVDOA_KOVPRPDPROCESS_H

#include <memory>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// Mains frequency. Any other number is stored and counts as 50 Hz.
enum PddMode : int { PDD_MODE_50HZ = 0, PDD_MODE_60HZ = 1 };

// What the builders of a pattern write; the verdict is in the percentages.
enum PddType : int { PDD_TYPE_NONE = 0 };

// What the polls since the last reset have found. Ten 32-bit slots, in this order. Levels are amplitudes of
// the filtered stream, full scale 1.
struct PRPDResult
{
    float F1;                   // amplitude of the pattern's component at the mains frequency
    float F2;                   // and at twice the mains frequency
    float RMS;                  // noise floor
    float peak;                 // largest sample, at most 1
    float coronaPercent;        // share of the votes, 0 ... 100
    int coronaType;             // 1
    float alongSurfacePercent;  // share of the votes for a discharge along a surface
    int alongSurfaceType;       // 2
    float suspensionPercent;    // share of the votes for a discharge of a floating part
    int suspensionType;         // 3
};

static_assert(sizeof(PRPDResult) == 40);

// Threads: one may feed while another polls and a third reads results or resets. A poll holds a feeding
// thread up only while it copies its samples, some microseconds. A reset from the feeding thread waits for
// the end of a poll.
//
// Timing: neither FeedAudio() nor updatePdd() allocates; only a block longer than 8192 samples and longer
// than any before makes the filters' buffer grow. An object takes about 4.5 MB.
//
// Delay: the two filters delay what passes them, by 2.8 samples at 25 kHz, 2.6 at 30 kHz and 1.7 at 40 kHz.
// The last sample of a pattern's span lies 1 ... 5760 samples (60 Hz: 4800) before the newest one fed, since
// spans end at multiples of that; a poll that comes before the next multiple looks at the same samples
// again.
//
// How the stream is cut into blocks makes no difference to patterns and votes, except by what has been fed
// when a poll comes.
class KOVDOA_EXPORT KOVPrpdProcess
{
public:
    // 50 Hz mains, no votes. Reads the classifier's two model files, dir + "/SVM1.txt" and dir + "/SVM2.txt".
    //   dir  folder, as the operating system spells it; null: "/sdcard/workdir/". Not kept.
    // A model file is text: numbers between white space, the decimal point a point. They are the dimension
    // (of four at most), the number of vectors n, gamma, rho, n coefficients and n vectors, one after the
    // other. Of more than 1024 vectors the first 1024 are used; missing numbers are 0; numbers after the last
    // vector change nothing. A file that does not begin as such (a dimension other than 0 ... 4, a negative
    // number of vectors, letters) is not used at all; each of these is one line in the log. A missing file is
    // no error. Without a model every discharge that would need one is called along-surface. Only the second
    // file is decided by.
    explicit KOVPrpdProcess(const char* dir);
    ~KOVPrpdProcess();
    KOVPrpdProcess(const KOVPrpdProcess&) = delete;
    KOVPrpdProcess& operator=(const KOVPrpdProcess&) = delete;

    // Changing the mode resets nothing; the pattern is of the new mains from the next poll on.
    void setPddMode(PddMode mode);
    PddMode getPddMode();

    // Bins in a page, one mains cycle: 240, with 60 Hz mains 200. Pages in a pattern: 10.
    int pageLength();
    int pageNumber();

    // Feeds n samples of 96 kHz audio, -1 ... 1, through two high-pass filters of 25 kHz. Ignored when
    // samples is null or n is not positive. What is not finite stays in the recursive filters and silences
    // the analysis until a reset.
    void FeedAudio(float* samples, int n);

    // The same for samples that have been filtered already. The latest 480000 samples (5 s) are kept.
    void audioInput(float* samples, int n);

    // One poll: builds a pattern of the newest samples and lets it cast a vote. True when there were samples
    // enough for a pattern (60544, with 60 Hz mains 50624, since the start or the last reset); F1 and F2 are
    // written in any case, then of the pattern before. The percentages are published with the 26th vote and
    // renewed with each one after it.
    bool updatePdd();

    // The record, and the pattern: ten pages of pageLength() bins, page by page, if `out` has room for
    // `capacity` floats of at least that number (2400, with 60 Hz mains 2000); otherwise, or when out is
    // null, none of it is written. The pattern is zero before the first one and outlasts a reset.
    PRPDResult getPddFrameData(float* out, int capacity);

    // Forgets votes, verdict, levels, tracked phase and the stream. Keeps mode, models and pattern. Before the
    // start of the new stream, where the first patterns reach (by less than 5760 samples), lies what the old one
    // has left there, or silence.
    void resetResult();

    // The steps of a poll.
    //
    // Whether a peak stands out of a noise floor, both amplitudes. With levels in dB above 1e-6, in single
    // precision, it must exceed the floor by more than 15 dB for a peak below 42 dB, 13.5 below 45, 12 below
    // 48, 10.5 below 51, 9 below 54 and 7.5 above. A floor of 0 lets every peak pass, except 0.
    bool checkPeak(float peak, float floor);

    // Bins: out[i] = sum of in[8 i + 1] ... in[8 i + 7] for i below n, in that order. The first of each eight
    // is left out on purpose.
    void getPddData(float* in, float* out, int n);

    // Builds the pattern of the current mains from the newest samples into `frame` (page by page, room for
    // 2400, with 60 Hz mains 2000), moves the tracked phase on, and renews floor and peak of the record.
    // False, with nothing done, when there are too few samples. `type` becomes PDD_TYPE_NONE.
    bool getPdd(float* frame, PddType& type);

    // The same for the named mains frequency, however few samples there are: what lies before the stream is
    // silence, or, after a reset, what the old stream has left there.
    void processPdd50Hz(float* frame, PddType& type);
    void processPdd60Hz(float* frame, PddType& type);

    // Radial basis function exp(-gamma * sum over k below dim of (sv[k] - x[k])^2): squares and exponential
    // in double precision, the sum rounded to single precision after each term.
    float RBF(float* x, float* sv, float gamma, int dim);

    // Describes the pattern of the last poll by a few numbers for the classifier.
    void calculateFeatures();

    // Casts the classifier's vote on those numbers: suspension when the decision is above 0, otherwise
    // along-surface.
    void checkPddType();

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
