#include "tools/discharge/dischargepicture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <opencv2/imgproc.hpp>
#include <string>

#include "tools/discharge/dischargereport.h"
#include "tools/render/lettering.h"

namespace kovtools {

namespace {

constexpr int pages = 10;
// Patterns after which the analyser's phase has come to rest, from wherever it was.
constexpr int settlingPatterns = 20;
static_assert(settlingPatterns < fewestVotes);
constexpr float samplesOfBin = 3.0F * 7.0F;  // a bin adds up seven samples of each of three cycles

// Levels: mean magnitudes in a bin, dB relative to full scale, in rows of half a decibel.
constexpr double topDb = 0.0;
constexpr double bottomDb = -120.0;
constexpr double rowsPerDb = 2.0;
constexpr int levelRows = static_cast<int>((topDb - bottomDb) * rowsPerDb);
constexpr int marginRows = 4;  // shown beyond the levels that occurred

// Pixels.
constexpr int left = 92;
constexpr int width = 720;
const cv::Rect densityPanel(left, 84, width, 330);
const cv::Rect meanPanel(left, 452, width, 150);
const cv::Rect pagesPanel(left, 640, width, 140);
const cv::Rect densityBar(left + width + 24, 84, 18, 330);

const cv::Scalar paper(30, 30, 30);
const cv::Scalar ground(14, 14, 14);
const cv::Scalar gridColour(70, 70, 70);
const cv::Scalar sineColour(190, 170, 110);
const cv::Scalar curveColour(80, 190, 255);
const cv::Scalar fillColour(45, 85, 115);

int panelX(const cv::Rect& panel, double degrees)
{
    return panel.x + static_cast<int>(std::lround(degrees / 360.0 * (panel.width - 1)));
}

// Height 0 ... 1 above the bottom of the panel.
int panelY(const cv::Rect& panel, double height)
{
    return panel.y + static_cast<int>(std::lround((1.0 - height) * (panel.height - 1)));
}

// Smaller than usual on a picture of this size: it is looked at, not filmed.
Layout lettering()
{
    return Layout(cv::Size(560, 420));
}

std::string numberText(const char* format, double value)
{
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

void drawLeftLabel(cv::Mat& picture, const std::string& text, const cv::Rect& panel, int y)
{
    const Layout layout = lettering();
    const cv::Size size = textSize(text, layout);
    drawText(picture, text, {panel.x - 8 - size.width, y + size.height / 2}, layout);
}

void drawTitle(cv::Mat& picture, const std::string& text, const cv::Rect& panel)
{
    drawText(picture, text, {panel.x, panel.y - 9}, lettering());
}

void drawGrid(cv::Mat& picture, const cv::Rect& panel)
{
    for (int degrees = 0; degrees <= 360; degrees += 90) {
        const int x = panelX(panel, degrees);
        cv::line(picture, {x, panel.y}, {x, panel.y + panel.height - 1}, gridColour, 1);
    }
    cv::rectangle(picture, panel, gridColour, 1);
}

void drawSine(cv::Mat& picture, const cv::Rect& panel)
{
    std::vector<cv::Point> curve;
    for (int degrees = 0; degrees <= 360; degrees += 2) {
        const double value = std::sin(degrees * std::numbers::pi / 180.0);
        curve.emplace_back(panelX(panel, degrees), panelY(panel, 0.5 + 0.46 * value));
    }
    cv::polylines(picture, curve, false, sineColour, 1, cv::LINE_AA);
}

void drawPhaseAxis(cv::Mat& picture, const cv::Rect& panel)
{
    const Layout layout = lettering();
    for (int degrees = 0; degrees <= 360; degrees += 90) {
        const std::string text = std::to_string(degrees);
        const int x = panelX(panel, degrees) - textSize(text, layout).width / 2;
        drawText(picture, text, {x, panel.y + panel.height + 18}, layout);
    }
    const std::string text = "phase, degrees; found from the discharges, not measured at the mains";
    const int x = panel.x + (panel.width - textSize(text, layout).width) / 2;
    drawText(picture, text, {x, panel.y + panel.height + 42}, layout);
}

// Colours of values 0 ... 1; where there are none at all, the ground shows.
cv::Mat coloured(const cv::Mat& values)
{
    cv::Mat bytes;
    values.convertTo(bytes, CV_8U, 255.0);
    cv::Mat colours;
    cv::applyColorMap(bytes, colours, cv::COLORMAP_INFERNO);
    colours.setTo(ground, values <= 0.0);
    return colours;
}

void paintInto(cv::Mat& picture, const cv::Mat& colours, const cv::Rect& panel)
{
    cv::Mat area = picture(panel);
    cv::resize(colours, area, area.size(), 0.0, 0.0, cv::INTER_NEAREST);
}

// Logarithmic, so that what is rare is seen beside what is usual: once is a tenth, the most frequent 1.
cv::Mat shades(const cv::Mat& counts, double most)
{
    cv::Mat values(counts.size(), CV_32F);
    for (int row = 0; row < counts.rows; ++row) {
        for (int col = 0; col < counts.cols; ++col) {
            const int count = counts.at<int>(row, col);
            const double share = most > 1.0 ? std::log(std::max(count, 1)) / std::log(most) : 1.0;
            values.at<float>(row, col) = count > 0 ? static_cast<float>(0.1 + 0.9 * share) : 0.0F;
        }
    }
    return values;
}

// The rows between the loudest and the faintest level that occurred.
cv::Range usedRows(const cv::Mat& counts)
{
    int first = 0;
    while (first + 1 < counts.rows && cv::countNonZero(counts.row(first)) == 0) {
        ++first;
    }
    int last = counts.rows - 1;
    while (last > first && cv::countNonZero(counts.row(last)) == 0) {
        --last;
    }
    return {std::max(first - marginRows, 0), std::min(last + marginRows + 1, counts.rows)};
}

void drawDensityBar(cv::Mat& picture, int most)
{
    const Layout layout = lettering();
    cv::Mat values(densityBar.height, 1, CV_32F);
    for (int row = 0; row < values.rows; ++row) {
        values.at<float>(row) = static_cast<float>(1.0 - 0.9 * row / (values.rows - 1));
    }
    paintInto(picture, coloured(values), densityBar);
    const int x = densityBar.x + densityBar.width + 8;
    drawText(picture, std::to_string(most), {x, densityBar.y + 12}, layout);
    drawText(picture, "times", {x, densityBar.y + 12 + layout.lineHeight}, layout);
    drawText(picture, "1", {x, densityBar.y + densityBar.height}, layout);
}

void drawHeading(cv::Mat& picture, const DischargeAnalysis& analysis, Mains mains)
{
    const Layout layout = lettering();
    const PRPDResult& result = analysis.result;
    drawText(picture, std::to_string(frequencyOf(mains)) + " Hz mains: " + verdictText(verdictOf(result)),
             {left, 26}, layout);
    char text[160];
    std::snprintf(text, sizeof text,
                  "%d votes: corona %.0f %%, along-surface %.0f %%, suspension %.0f %%, no discharge %.0f %%",
                  analysis.votes, static_cast<double>(result.coronaPercent),
                  static_cast<double>(result.alongSurfacePercent),
                  static_cast<double>(result.suspensionPercent), static_cast<double>(noisePercent(result)));
    drawText(picture, text, {left, 50}, layout);
}

}  // namespace

const cv::Size DischargePicture::pictureSize(900, 840);

DischargePicture::DischargePicture(Mains mains)
    : m_mains(mains),
      m_pageLength(12000 / frequencyOf(mains)),
      m_counts(cv::Mat::zeros(levelRows, m_pageLength, CV_32S)),
      m_sums(static_cast<std::size_t>(m_pageLength))
{
}

void DischargePicture::add(const std::vector<float>& frame)
{
    if (++m_patterns <= settlingPatterns) {
        return;
    }
    for (int page = m_pages == 0 ? 0 : pages - 1; page < pages; ++page) {
        addPage(frame.data() + page * m_pageLength);
    }
    m_latest = frame;
}

void DischargePicture::addPage(const float* page)
{
    for (int j = 0; j < m_pageLength; ++j) {
        const double amplitude = static_cast<double>(page[j] / samplesOfBin);
        m_sums[static_cast<std::size_t>(j)] += amplitude;
        const double db = std::clamp(20.0 * std::log10(std::max(amplitude, 1e-30)), bottomDb, topDb);
        const int row = static_cast<int>((topDb - db) * rowsPerDb);
        m_counts.at<int>(std::min(row, levelRows - 1), j) += 1;
    }
    ++m_pages;
}

void DischargePicture::drawDensity(cv::Mat& picture) const
{
    const cv::Range rows = usedRows(m_counts);
    double most = 1.0;
    cv::minMaxLoc(m_counts, nullptr, &most);
    paintInto(picture, coloured(shades(m_counts.rowRange(rows), most)), densityPanel);
    drawGrid(picture, densityPanel);
    drawSine(picture, densityPanel);
    const double high = topDb - rows.start / rowsPerDb;
    const double low = topDb - rows.end / rowsPerDb;
    const double step = high - low > 90.0 ? 20.0 : high - low > 18.0 ? 10.0 : 5.0;
    for (double db = std::floor(high / step) * step; db >= low; db -= step) {
        const int y = panelY(densityPanel, (db - low) / (high - low));
        cv::line(picture, {densityPanel.x, y}, {densityPanel.x + densityPanel.width - 1, y}, gridColour, 1);
        drawLeftLabel(picture, numberText("%.0f dB", db), densityPanel, y);
    }
    drawTitle(picture, "How often each level occurred (of " + std::to_string(m_pages) + " pages)",
              densityPanel);
    drawDensityBar(picture, static_cast<int>(most));
}

void DischargePicture::drawMeanCycle(cv::Mat& picture) const
{
    const double most = std::max(*std::max_element(m_sums.begin(), m_sums.end()), 1e-30);
    const double scale = 1.0 / (1.08 * most);
    std::vector<cv::Point> curve;
    for (int j = 0; j < m_pageLength; ++j) {
        curve.emplace_back(panelX(meanPanel, 360.0 * (j + 0.5) / m_pageLength),
                           panelY(meanPanel, m_sums[static_cast<std::size_t>(j)] * scale));
    }
    std::vector<cv::Point> area = curve;
    area.emplace_back(curve.back().x, panelY(meanPanel, 0.0));
    area.emplace_back(curve.front().x, panelY(meanPanel, 0.0));
    cv::rectangle(picture, meanPanel, ground, cv::FILLED);
    cv::fillPoly(picture, std::vector<std::vector<cv::Point>>{area}, fillColour, cv::LINE_AA);
    drawGrid(picture, meanPanel);
    drawSine(picture, meanPanel);
    cv::polylines(picture, curve, false, curveColour, 2, cv::LINE_AA);
    const double top = most / m_pages;
    for (const double part : {0.0, 0.5, 1.0}) {
        drawLeftLabel(picture, numberText("%.2g", part * top), meanPanel, panelY(meanPanel, part / 1.08));
    }
    drawTitle(picture, "Mean cycle: mean magnitude, full scale 1", meanPanel);
}

void DischargePicture::drawPages(cv::Mat& picture) const
{
    cv::Mat values = cv::Mat(m_latest, true).reshape(1, pages);
    double most = 0.0;
    cv::minMaxLoc(values, nullptr, &most);
    values = values / std::max(most, 1e-30);
    paintInto(picture, coloured(values), pagesPanel);
    drawGrid(picture, pagesPanel);
    for (const int page : {1, 5, 10}) {
        drawLeftLabel(picture, std::to_string(page), pagesPanel,
                      panelY(pagesPanel, 1.0 - (page - 0.5) / pages));
    }
    drawTitle(picture, "The ten pages of the last pattern, three cycles each", pagesPanel);
    drawPhaseAxis(picture, pagesPanel);
}

cv::Mat DischargePicture::draw(const DischargeAnalysis& analysis) const
{
    cv::Mat picture(pictureSize, CV_8UC3, paper);
    drawHeading(picture, analysis, m_mains);
    drawDensity(picture);
    drawMeanCycle(picture);
    drawPages(picture);
    return picture;
}

}  // namespace kovtools
