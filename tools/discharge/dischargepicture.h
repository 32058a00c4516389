// The phase-resolved picture of a discharge.
#ifndef KOVTOOLS_DISCHARGEPICTURE_H
#define KOVTOOLS_DISCHARGEPICTURE_H

#include <opencv2/core/mat.hpp>
#include <vector>

#include "tools/discharge/dischargeanalysis.h"
#include "tools/discharge/mains.h"

namespace kovtools {

// Three panels over the same phase axis: how often each level occurred at each phase, the mean cycle, and the
// ten pages of the last pattern one below the other. The analyser does not see the mains; it puts the
// strongest discharges near 81 degrees, and the sine is drawn to that.
class DischargePicture
{
public:
    explicit DischargePicture(Mains mains);

    // The next pattern of the recording, page by page. The first twenty are left out: until then the
    // analyser's phase may still be moving. Patterns overlap: of all but the first of the others, only the
    // last page is new.
    void add(const std::vector<float>& frame);

    // 8 bits, BGR, of pictureSize. As many patterns as a verdict takes have been added.
    cv::Mat draw(const DischargeAnalysis& analysis) const;

    static const cv::Size pictureSize;

private:
    void addPage(const float* page);
    void drawDensity(cv::Mat& picture) const;
    void drawMeanCycle(cv::Mat& picture) const;
    void drawPages(cv::Mat& picture) const;

    Mains m_mains;
    int m_pageLength;
    cv::Mat m_counts;             // 32-bit integers, level (loudest on top) by phase
    std::vector<double> m_sums;   // of each bin
    std::vector<float> m_latest;  // pattern
    int m_patterns = 0;           // added
    int m_pages = 0;              // counted
};

}  // namespace kovtools

#endif
