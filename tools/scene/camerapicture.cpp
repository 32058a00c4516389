#include "tools/scene/camerapicture.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <opencv2/imgproc.hpp>

#include "tools/scene/random.h"
#include "tools/scene/scenesimulation.h"
#include "tools/scene/wallcanvas.h"

namespace kovtools {

namespace {

constexpr double floorHeight = -1.85;  // m below the camera's axis
constexpr double dadoHeight = -0.75;   // m, upper edge of the darker lower part of the wall

const Paint steel(150, 140, 128);
const Paint gasYellow(60, 170, 205);
const Paint waterBlue(165, 115, 60);
const Paint valveRed(45, 45, 190);
const Paint machineGreen(105, 125, 78);
const Paint cabinetGrey(158, 158, 150);
const Paint pathPaint(190, 235, 245);

void paintWall(WallCanvas& canvas)
{
    const double w = canvas.halfWidth() + 0.1;
    const double h = canvas.halfHeight() + 0.1;
    canvas.box({-w, -h}, {w, h}, Paint(128, 138, 140));
    canvas.box({-w, -h}, {w, dadoHeight}, Paint(96, 100, 88));
    canvas.line({-w, dadoHeight}, {w, dadoHeight}, 0.035, Paint(60, 78, 86));
    // Courses of blocks, every other one shifted by half a block.
    const double blockWidth = 0.62;
    const double blockHeight = 0.31;
    int course = 0;
    for (double y = floorHeight; y < h; y += blockHeight, ++course) {
        const Paint joint = y < dadoHeight ? Paint(82, 86, 76) : Paint(112, 121, 123);
        canvas.line({-w, y}, {w, y}, 0.012, joint);
        for (double x = -6.2 + (course % 2) * 0.5 * blockWidth; x < w; x += blockWidth) {
            canvas.line({x, y}, {x, y + blockHeight}, 0.012, joint);
        }
    }
}

// The floor comes towards the camera: its slabs follow the perspective.
void paintFloor(WallCanvas& canvas)
{
    constexpr double nearest = 2.0;  // m before the camera, outside the picture
    canvas.polygonAt({{-9.0, floorHeight, sceneDistance},
                      {9.0, floorHeight, sceneDistance},
                      {9.0, floorHeight, nearest},
                      {-9.0, floorHeight, nearest}},
                     Paint(74, 80, 84));
    for (int slab = -9; slab <= 9; ++slab) {
        canvas.polygonAt({{slab - 0.012, floorHeight, sceneDistance},
                          {slab + 0.012, floorHeight, sceneDistance},
                          {slab + 0.012, floorHeight, nearest},
                          {slab - 0.012, floorHeight, nearest}},
                         Paint(56, 60, 64));
    }
    for (double depth = sceneDistance; depth > nearest; depth -= 0.5) {
        canvas.polygonAt({{-9.0, floorHeight, depth},
                          {9.0, floorHeight, depth},
                          {9.0, floorHeight, depth - 0.02},
                          {-9.0, floorHeight, depth - 0.02}},
                         Paint(56, 60, 64));
    }
    // A yellow line keeps people away from the machines.
    canvas.polygonAt({{-9.0, floorHeight, 4.62},
                      {9.0, floorHeight, 4.62},
                      {9.0, floorHeight, 4.50},
                      {-9.0, floorHeight, 4.50}},
                     Paint(50, 165, 190));
    canvas.box({-9.0, floorHeight}, {9.0, floorHeight + 0.10}, Paint(58, 60, 56));
}

void drawPipes(WallCanvas& canvas)
{
    const double w = canvas.halfWidth() + 0.2;
    // Header pipe below the ceiling with two drops, and a thinner return line.
    canvas.pipe({-w, 1.55}, {w, 1.55}, 0.26, steel);
    canvas.pipe({-w, 1.16}, {0.86, 1.16}, 0.15, waterBlue);
    canvas.bend({0.86, 0.96}, 0.20, 0.0, 0.15, waterBlue);
    canvas.pipe({1.06, 0.96}, {1.06, -0.72}, 0.15, waterBlue);
    canvas.bend({1.26, -0.72}, 0.20, 180.0, 0.15, waterBlue);
    canvas.pipe({1.26, -0.92}, {1.75, -0.92}, 0.15, waterBlue);

    canvas.pipe({-1.55, 1.45}, {-1.55, -0.85}, 0.20, steel);
    canvas.pipe({0.25, 1.45}, {0.25, 0.05}, 0.16, gasYellow);
    canvas.bend({0.03, 0.05}, 0.22, 270.0, 0.16, gasYellow);
    canvas.pipe({0.03, -0.17}, {-0.72, -0.17}, 0.16, gasYellow);
    canvas.bend({-0.72, -0.39}, 0.22, 90.0, 0.16, gasYellow);
    canvas.pipe({-0.94, -0.39}, {-0.94, floorHeight + 0.1}, 0.16, gasYellow);

    for (const double x : {-2.45, -0.65, 1.25, 2.55}) {
        canvas.flange({x, 1.55}, true, 0.26, shaded(steel, 0.8));
    }
    canvas.flange({-1.55, 0.62}, false, 0.20, shaded(steel, 0.8));
    canvas.flange({-1.55, -0.42}, false, 0.20, shaded(steel, 0.8));
    canvas.flange({0.25, 0.82}, false, 0.16, shaded(gasYellow, 0.75));
    canvas.flange({-0.38, -0.17}, true, 0.16, shaded(gasYellow, 0.75));
    canvas.flange({-0.94, -1.05}, false, 0.16, shaded(gasYellow, 0.75));
    canvas.flange({1.06, 0.34}, false, 0.15, shaded(waterBlue, 0.78));

    canvas.pipe({-1.55, 0.10}, {-1.28, 0.10}, 0.07, steel);
    canvas.handWheel({-1.55, 0.10}, 0.17, valveRed);
    canvas.handWheel({0.25, 0.42}, 0.14, valveRed);
    canvas.handWheel({1.06, -0.28}, 0.13, Paint(150, 90, 40));
    canvas.pipe({0.62, 1.16}, {0.62, 0.92}, 0.05, steel);
    canvas.gauge({0.62, 0.82}, 0.13, 118.0);
    canvas.gauge({-0.94, -0.72}, 0.10, 160.0);
}

void drawCompressor(WallCanvas& canvas)
{
    // Air receiver with the motor and the compressor head on top.
    canvas.pipe({-2.75, -1.34}, {-1.25, -1.34}, 0.58, machineGreen);
    for (const double x : {-2.62, -1.38}) {
        canvas.pipe({x - 0.02, -1.34}, {x + 0.02, -1.34}, 0.60, shaded(machineGreen, 0.7));
    }
    for (const double x : {-2.45, -1.55}) {
        canvas.box({x - 0.07, floorHeight - 0.05}, {x + 0.07, -1.58}, shaded(machineGreen, 0.45));
    }
    canvas.box({-2.62, -1.06}, {-1.42, -0.99}, Paint(62, 66, 68));
    canvas.pipe({-2.55, -0.80}, {-2.02, -0.80}, 0.38, Paint(140, 118, 84));
    for (double x = -2.50; x < -2.06; x += 0.055) {
        canvas.pipe({x, -0.80}, {x + 0.02, -0.80}, 0.40, Paint(108, 90, 62));
    }
    canvas.box({-1.86, -1.0}, {-1.50, -0.52}, Paint(88, 92, 96));
    for (double y = -0.96; y < -0.54; y += 0.07) {
        canvas.box({-1.91, y}, {-1.45, y + 0.03}, Paint(122, 126, 130));
    }
    canvas.disc({-1.94, -0.80}, 0.20, Paint(40, 42, 44));
    canvas.ring({-1.94, -0.80}, 0.15, 0.02, Paint(98, 100, 104));
    canvas.disc({-1.94, -0.80}, 0.05, Paint(120, 124, 128));
}

void drawTank(WallCanvas& canvas)
{
    canvas.pipe({2.35, floorHeight + 0.22}, {2.35, -0.35}, 0.92, Paint(168, 160, 148));
    canvas.pipe({2.35, -0.35}, {2.35, -0.30}, 0.98, Paint(140, 134, 124));
    canvas.pipe({2.35, floorHeight + 0.22}, {2.35, floorHeight + 0.28}, 0.98, Paint(140, 134, 124));
    for (const double x : {2.02, 2.66}) {
        canvas.box({x - 0.05, floorHeight - 0.06}, {x + 0.05, floorHeight + 0.24}, Paint(70, 70, 68));
    }
    canvas.pipe({1.70, -0.92}, {1.94, -0.92}, 0.15, waterBlue);
    canvas.flange({1.80, -0.92}, true, 0.15, shaded(waterBlue, 0.78));
    canvas.pipe({2.35, -0.30}, {2.35, -0.08}, 0.09, steel);
    canvas.gauge({2.35, 0.02}, 0.11, 60.0);
    canvas.box({2.12, -0.98}, {2.58, -0.74}, Paint(215, 220, 222));
    canvas.lettering("T 12", {2.35, -0.86}, 0.10, Paint(40, 40, 40));
}

void drawCabinet(WallCanvas& canvas)
{
    canvas.box({1.62, 0.10}, {2.44, 1.16}, shaded(cabinetGrey, 0.55));
    canvas.box({1.64, 0.13}, {2.42, 1.14}, cabinetGrey);
    canvas.line({2.03, 0.13}, {2.03, 1.14}, 0.012, shaded(cabinetGrey, 0.5));
    for (double y = 0.20; y < 0.42; y += 0.045) {
        canvas.box({1.72, y}, {1.94, y + 0.016}, shaded(cabinetGrey, 0.45));
        canvas.box({2.12, y}, {2.34, y + 0.016}, shaded(cabinetGrey, 0.45));
    }
    canvas.polygon({{2.13, 0.66}, {2.33, 0.66}, {2.23, 0.84}}, Paint(25, 25, 25));
    canvas.polygon({{2.155, 0.675}, {2.305, 0.675}, {2.23, 0.81}}, Paint(45, 200, 235));
    canvas.polygon({{2.235, 0.79}, {2.205, 0.735}, {2.235, 0.735}}, Paint(25, 25, 25));
    canvas.polygon({{2.225, 0.685}, {2.255, 0.745}, {2.225, 0.745}}, Paint(25, 25, 25));
    canvas.disc({1.74, 1.02}, 0.026, Paint(70, 220, 90));
    canvas.disc({1.83, 1.02}, 0.026, Paint(40, 160, 235));
    canvas.disc({1.92, 1.02}, 0.026, Paint(50, 50, 120));
    canvas.box({1.98, 0.60}, {2.005, 0.74}, Paint(50, 50, 50));
    for (const double x : {1.76, 1.88, 2.0}) {
        canvas.pipe({x, 1.16}, {x, 1.42}, 0.035, Paint(52, 52, 54));
    }
}

// The things that stand off the wall, for their shadows and for themselves.
void drawThings(WallCanvas& canvas)
{
    drawPipes(canvas);
    drawCabinet(canvas);
    drawCompressor(canvas);
    drawTank(canvas);
}

// Draws the things twice: first on a canvas of their own, whose painted pixels are the outlines for the
// shadows.
void drawThingsWithShadows(WallCanvas& canvas)
{
    const cv::Mat wall = canvas.pixels().clone();
    canvas.pixels().setTo(cv::Scalar(255, 0, 255));  // a colour that nothing is painted in
    drawThings(canvas);
    cv::Mat background;
    cv::inRange(canvas.pixels(), cv::Scalar(255, 0, 255), cv::Scalar(255, 0, 255), background);
    const cv::Mat outlines = 255 - background;
    wall.copyTo(canvas.pixels());
    canvas.castShadows(outlines, 0.10, 0.05, 0.60);
    drawThings(canvas);
}

WallPoint wallPoint(const WallCanvas& canvas, PicturePosition position)
{
    return {(2.0 * position.u - 1.0) * canvas.halfWidth(), (1.0 - 2.0 * position.v) * canvas.halfHeight()};
}

// A name on a round label.
void drawLabel(WallCanvas& canvas, const std::string& name, WallPoint middle)
{
    canvas.disc(middle, 0.105, Paint(40, 40, 40));
    canvas.disc(middle, 0.090, pathPaint);
    canvas.lettering(name, middle, 0.095, Paint(40, 40, 40));
}

// Dashes of equal length along the way that a source takes during the recording, and its name where it
// starts.
void drawPath(WallCanvas& canvas, const SoundSource& source, double duration)
{
    constexpr double dash = 0.075;  // m
    constexpr double step = 0.002;  // s
    double way = 0.0;
    WallPoint last = wallPoint(canvas, source.positionAt(0.0));
    for (double time = step; time < duration; time += step) {
        const WallPoint next = wallPoint(canvas, source.positionAt(time));
        way += cv::norm(next - last);
        if (std::fmod(way, 2.0 * dash) < dash) {
            canvas.line(last, next, 0.022, pathPaint);
        }
        last = next;
    }
    const WallPoint start = wallPoint(canvas, source.positionAt(0.0));
    drawLabel(canvas, source.name, start);
    const WallPoint end = wallPoint(canvas, source.positionAt(duration));
    canvas.ring(end, 0.05, 0.02, pathPaint);
}

// A ring around the place, so that what leaks stays visible, and the name below it.
void drawStandingMark(WallCanvas& canvas, const StandingMark& mark)
{
    const WallPoint middle = wallPoint(canvas, mark.position);
    canvas.ring(middle, 0.14, 0.024, pathPaint);
    canvas.line(middle - WallPoint(0.0, 0.14), middle - WallPoint(0.0, 0.24), 0.024, pathPaint);
    drawLabel(canvas, mark.name, middle - WallPoint(0.0, 0.33));
}

// Two lamps above the picture, darker corners, and the grain of a sensor.
void light(cv::Mat& picture)
{
    Random grain(208);
    for (int y = 0; y < picture.rows; ++y) {
        auto* const pixel = picture.ptr<cv::Vec3b>(y);
        const double v = (y + 0.5) / picture.rows - 0.5;
        for (int x = 0; x < picture.cols; ++x) {
            const double u = (x + 0.5) / picture.cols - 0.5;
            double lamps = 0.0;
            for (const double lamp : {-0.27, 0.24}) {
                const double across = (u - lamp) / 0.30;
                const double down = (v + 0.55) / 0.75;
                lamps += std::exp(-across * across - down * down);
            }
            const double brightness = (0.50 + 0.55 * lamps) * (1.0 - 0.75 * (u * u + v * v));
            const double noise = grain.uniform(-3.5, 3.5);
            constexpr double warmth[3] = {0.93, 1.0, 1.04};
            for (int channel = 0; channel < 3; ++channel) {
                const double value = pixel[x][channel] * brightness * warmth[channel] + noise;
                pixel[x][channel] = cv::saturate_cast<unsigned char>(value);
            }
        }
    }
}

cv::Mat drawWall(cv::Size size, const std::function<void(WallCanvas&)>& drawMarks)
{
    const double halfWidth =
        sceneDistance * std::tan(0.5 * FieldOfView::horizontalDegrees * std::numbers::pi / 180.0);
    WallCanvas canvas(size.width, size.height, halfWidth, sceneDistance);
    paintWall(canvas);
    paintFloor(canvas);
    drawThingsWithShadows(canvas);
    drawMarks(canvas);
    cv::Mat picture = canvas.finish();
    light(picture);
    return picture;
}

}  // namespace

cv::Mat drawCameraPicture(const SceneSimulation& scene)
{
    const SceneOptions& options = scene.options();
    return drawWall({options.pictureWidth, options.pictureHeight}, [&](WallCanvas& canvas) {
        for (const SoundSource& source : scene.sources()) {
            drawPath(canvas, source, options.frames / options.frameRate);
        }
    });
}

cv::Mat drawCameraPicture(cv::Size size, const std::vector<StandingMark>& sources)
{
    return drawWall(size, [&](WallCanvas& canvas) {
        for (const StandingMark& source : sources) {
            drawStandingMark(canvas, source);
        }
    });
}

}  // namespace kovtools
