#include "tools/audio/arraypicture.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "tools/render/lettering.h"
#include "tools/scene/arraygeometry.h"
#include "tools/support/wording.h"

namespace kovtools {

namespace {

const cv::Scalar paper(24, 24, 24);
const cv::Scalar rim(70, 70, 70);
const cv::Point middle(385, 395);          // of the array, pixels
constexpr double pixelsPerMetre = 3300.0;  // the array fills the height
constexpr int dotRadius = 6;               // pixels, of a microphone without a fault
constexpr int markRadius = 11;             // pixels
constexpr int legendLeft = 770;            // pixels
constexpr int mostNamed = 18;              // failing microphones that the legend has room for

// Sizes of the text are those of a picture of this size.
Layout pictureLayout()
{
    return Layout(cv::Size(arrayPictureWidth, arrayPictureHeight));
}

void fillShape(cv::Mat& picture, const std::vector<cv::Point>& corners, const cv::Scalar& colour)
{
    cv::fillConvexPoly(picture, corners, colour, cv::LINE_AA);
    cv::polylines(picture, corners, true, outlineColour, 1, cv::LINE_AA);
}

// The mark's own colour stands in its middle, whatever the shape.
void drawMark(cv::Mat& picture, cv::Point at, Fault fault)
{
    const cv::Scalar colour = faultColour(fault);
    const int r = markRadius;
    switch (fault) {
        case Fault::None:
            cv::circle(picture, at, dotRadius, colour, cv::FILLED, cv::LINE_AA);
            break;
        case Fault::Silent:  // a cross
            for (const int sign : {-1, 1}) {
                cv::line(picture, at + cv::Point(-r, -sign * r), at + cv::Point(r, sign * r), colour, 6,
                         cv::LINE_AA);
            }
            break;
        case Fault::Copy:  // a square
            fillShape(
                picture,
                {at + cv::Point(-r, -r), at + cv::Point(r, -r), at + cv::Point(r, r), at + cv::Point(-r, r)},
                colour);
            break;
        case Fault::Misplaced:  // a diamond
            fillShape(picture,
                      {at + cv::Point(0, -r - 3), at + cv::Point(r + 3, 0), at + cv::Point(0, r + 3),
                       at + cv::Point(-r - 3, 0)},
                      colour);
            break;
        case Fault::Misaligned:  // a triangle
            fillShape(picture,
                      {at + cv::Point(0, -r - 2), at + cv::Point(r + 2, r), at + cv::Point(-r - 2, r)},
                      colour);
            break;
    }
}

// Beside the mark, on the side away from the middle of the array, where it hides least.
void drawNumber(cv::Mat& picture, int microphone, const Layout& layout)
{
    const std::string text = std::to_string(microphone);
    const cv::Size size = textSize(text, layout);
    const cv::Point at = microphonePlace(microphone);
    const int gap = markRadius + 5;
    const int x = at.x >= middle.x ? at.x + gap : at.x - gap - size.width;
    drawText(picture, text, cv::Point(x, at.y + size.height / 2), layout);
}

void drawMicrophones(cv::Mat& picture, const ArrayCheck& check, const Layout& layout)
{
    const int radius = static_cast<int>(std::lround(0.5 * arrayAperture * pixelsPerMetre)) + 3 * dotRadius;
    cv::circle(picture, middle, radius, rim, 2, cv::LINE_AA);
    for (std::size_t i = 0; i < check.microphones.size(); ++i) {
        if (check.microphones[i].fault == Fault::None) {
            drawMark(picture, microphonePlace(static_cast<int>(i)), Fault::None);
        }
    }
    const std::vector<int> failing = check.failing();
    for (const int microphone : failing) {
        drawMark(picture, microphonePlace(microphone),
                 check.microphones[static_cast<std::size_t>(microphone)].fault);
    }
    for (const int microphone : failing) {
        drawNumber(picture, microphone, layout);
    }
}

void drawLegend(cv::Mat& picture, const ArrayCheck& check, const Layout& layout)
{
    int y = 90;
    const auto line = [&](Fault fault) {
        const auto count = std::count_if(check.microphones.begin(), check.microphones.end(),
                                         [fault](const MicrophoneResult& m) { return m.fault == fault; });
        drawMark(picture, cv::Point(legendLeft + markRadius, y - 5), fault);
        drawText(picture, std::to_string(count) + " " + (fault == Fault::None ? "pass" : faultName(fault)),
                 cv::Point(legendLeft + 36, y), layout);
        y += 34;
    };
    line(Fault::None);
    for (const Fault fault : everyFault) {
        line(fault);
    }
    y += 16;
    const std::vector<int> failing = check.failing();
    for (std::size_t i = 0; i < failing.size(); ++i, y += 24) {
        if (i == mostNamed) {
            drawText(picture, "and " + std::to_string(failing.size() - i) + " more", cv::Point(legendLeft, y),
                     layout);
            break;
        }
        const MicrophoneResult& microphone = check.microphones[static_cast<std::size_t>(failing[i])];
        const std::string of =
            microphone.fault == Fault::Copy ? " of " + std::to_string(microphone.copyOf) : "";
        drawText(picture, std::to_string(failing[i]) + " " + faultName(microphone.fault) + of,
                 cv::Point(legendLeft, y), layout);
    }
}

std::string title(const ArrayCheck& check)
{
    const std::size_t failing = check.failing().size();
    const std::string all = counted(static_cast<int>(check.microphones.size()), "microphone");
    return failing == 0 ? "All " + all + " pass"
                        : std::to_string(failing) + " of " + all + (failing == 1 ? " fails" : " fail");
}

}  // namespace

cv::Scalar faultColour(Fault fault)
{
    // After M. Okabe and K. Ito, "Color Universal Design", 2008.
    switch (fault) {
        case Fault::None:
            break;
        case Fault::Silent:
            return {0, 94, 213};  // vermilion
        case Fault::Copy:
            return {66, 228, 240};  // yellow
        case Fault::Misplaced:
            return {233, 180, 86};  // sky blue
        case Fault::Misaligned:
            return {167, 121, 204};  // purple
    }
    return {125, 125, 125};
}

cv::Point microphonePlace(int microphone)
{
    static const std::vector<Microphone> places = sunflowerSpiral();
    const Microphone& place = places[static_cast<std::size_t>(microphone)];
    return middle + cv::Point(static_cast<int>(std::lround(place.x * pixelsPerMetre)),
                              -static_cast<int>(std::lround(place.y * pixelsPerMetre)));
}

cv::Mat drawArray(const ArrayCheck& check)
{
    cv::Mat picture(arrayPictureHeight, arrayPictureWidth, CV_8UC3, paper);
    const Layout layout = pictureLayout();
    drawMicrophones(picture, check, layout);
    drawText(picture, title(check), cv::Point(24, 34), layout);
    drawText(picture, "seen from behind", cv::Point(legendLeft, 34), layout);
    drawLegend(picture, check, layout);
    return picture;
}

}  // namespace kovtools
