// A sheet of small pictures that shows a whole recording at a glance.
#ifndef KOVTOOLS_CONTACTSHEET_H
#define KOVTOOLS_CONTACTSHEET_H

#include <opencv2/core/mat.hpp>
#include <vector>

namespace kovtools {

constexpr int contactSheetPictures = 12;

// Which of the frames `first` ... `last` to show: at most `count`, evenly spread, the first and the last
// among them.
std::vector<int> evenlySpread(int first, int last, int count = contactSheetPictures);

class ContactSheet
{
public:
    // Room for `count` pictures of the proportions of `picture`.
    ContactSheet(int count, cv::Size picture);

    // Size that pictures are shrunk to before they are annotated, so that the text keeps its size.
    cv::Size tileSize() const { return m_tile; }

    // The next tile; of tileSize().
    void add(const cv::Mat& tile);

    const cv::Mat& picture() const { return m_sheet; }

private:
    cv::Size m_tile;
    int m_columns;
    int m_added = 0;
    cv::Mat m_sheet;
};

}  // namespace kovtools

#endif
