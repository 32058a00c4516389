#include "tests/tools/commandtable.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <ostream>

#include "tests/tools/arraysamples.h"
#include "tests/tools/samples.h"
#include "tests/tools/sounds.h"
#include "tools/render/framesink.h"

namespace kovtools::tests {

namespace fs = std::filesystem;

namespace {

constexpr int sampleRate = 96000;  // Hz

// Long enough for a verdict on discharges.
void writeNoise(const fs::path& file, unsigned seed)
{
    writeFile(file, floatWav(noise(22 * sampleRate / 10, 0.1, seed), 1, sampleRate));
}

void writeNoiseArray(const fs::path& folder, int channels)
{
    constexpr int samples = 8192;
    std::vector<Samples> rows;
    for (int channel = 0; channel < channels; ++channel) {
        rows.push_back(noise(samples, 0.1, static_cast<unsigned>(channel + 1)));
    }
    writeArray(folder, rows);
}

std::string sixteenPairs()
{
    std::string text = "sx,sy,dx,dy\n";
    for (int i = 0; i < 16; ++i) {
        const int x = 40 * (i % 4) + 3 * i;
        const int y = 30 * (i / 4) + i * i % 7;
        text += std::to_string(x) + "," + std::to_string(y) + "," + std::to_string(2 * x + 5) + "," +
                std::to_string(2 * y + 9) + "\n";
    }
    return text;
}

// By what the file is called.
void writeInput(const fs::path& folder, const std::string& name)
{
    const fs::path file = folder / name;
    fs::create_directories(file.parent_path());
    if (name == "maps.kov") {
        writeRecording(file, 6, 12, 16, [](int frame, int row, int col) {
            return hill(6, 4 + frame, row, col) + 0.8F * hill(3, 12, row, col);
        });
    } else if (name == "sound.wav" || name == "other.wav") {
        writeNoise(file, name == "sound.wav" ? 1 : 2);
    } else if (name == "eight/data-0.wav") {
        writeNoiseArray(folder / "eight", 8);
    } else if (name == "whole/data-25.wav") {
        writeNoiseArray(folder / "whole", 208);
    } else if (name == "camera.png") {
        writePng(file, cv::Mat(240, 320, CV_8UC3, cv::Scalar(40, 90, 20)));
    } else if (name == "geometry.txt") {
        writeFile(file, "0 0 0\n.01 0 0\n0 .01 0\n.01 .01 0\n.02 0 0\n0 .02 0\n.02 .02 0\n.03 .01 0\n");
    } else if (name == "table.txt") {
        writeFile(file, "60 1.5 0.02\n61 1.5 0.03\n60 2 0.04\n61 2 0.05\n");
    } else if (name == "measurements.csv") {
        writeFile(file, "distance,level\n1.5,45.5\n2,40\n");
    } else if (name == "pairs.csv") {
        writeFile(file, sixteenPairs());
    } else if (name == "models/SVM2.txt") {
        writeFile(file, "4\n2\n0.5\n0.25\n1\n-1\n0.1 0.2 0.3 0.4\n1 2 3 4\n");
    } else {
        ADD_FAILURE() << "nobody knows how to make " << name;
    }
}

}  // namespace

std::vector<std::string> CommandRow::line() const
{
    std::vector<std::string> whole = command;
    whole.insert(whole.end(), arguments.begin(), arguments.end());
    return whole;
}

void PrintTo(const CommandRow& row, std::ostream* out)
{
    *out << "kovdoa";
    for (const std::string& word : row.line()) {
        *out << ' ' << word;
    }
}

const std::vector<CommandRow>& everyCommand()
{
    static const std::vector<CommandRow> rows{
        {"SimulateScene",
         {"simulate", "scene"},
         {"out.kov", "--frames", "2", "--camera-picture", "out.png", "--truth", "out.json"},
         {},
         {"out.kov", "out.png", "out.json"}},
        {"SimulateArray",
         {"simulate", "array"},
         {"out", "--geometry", "geometry.txt", "--seconds", "0.05", "--camera-picture", "out.png", "--truth",
          "out.json"},
         {"geometry.txt"},
         {"out/data-0.wav", "out.png", "out.json"}},
        {"SimulatePd",
         {"simulate", "pd"},
         {"out.wav", "--type", "corona", "--seconds", "0.1"},
         {},
         {"out.wav"}},
        {"SimulateGastable", {"simulate", "gastable"}, {"out.txt"}, {}, {"out.txt"}},
        {"Beamform",
         {"beamform"},
         {"eight", "--geometry", "geometry.txt", "-o", "out.kov"},
         {"eight/data-0.wav", "geometry.txt"},
         {"out.kov"}},
        {"Info", {"info"}, {"maps.kov"}, {"maps.kov"}, {}},
        {"InfoOfAnArray", {"info"}, {"eight", "--channels", "8"}, {"eight/data-0.wav"}, {}},
        {"Check", {"check"}, {"maps.kov"}, {"maps.kov"}, {}},
        {"Recover", {"recover"}, {"maps.kov", "-o", "out.kov"}, {"maps.kov"}, {"out.kov"}},
        {"RenderVideo",
         {"render"},
         {"maps.kov", "-o", "out.avi", "--camera", "camera.png", "--contact-sheet", "out.png"},
         {"maps.kov", "camera.png"},
         {"out.avi", "out.png"}},
        {"RenderPictures",
         {"render"},
         {"maps.kov", "-o", "out"},
         {"maps.kov"},
         {"out/frame-00001.png", "out/frame-00006.png"}},
        {"Listen", {"listen"}, {"sound.wav", "-o", "out.wav"}, {"sound.wav"}, {"out.wav"}},
        {"Resample",
         {"resample"},
         {"sound.wav", "-o", "out.wav", "--rate", "48000"},
         {"sound.wav"},
         {"out.wav"}},
        {"Mix",
         {"mix"},
         {"sound.wav", "other.wav", "-o", "out.wav"},
         {"sound.wav", "other.wav"},
         {"out.wav"}},
        {"Miccheck", {"miccheck"}, {"whole", "--plot", "out.png"}, {"whole/data-25.wav"}, {"out.png"}, false},
        {"Prpd",
         {"prpd"},
         {"sound.wav", "--models", "models", "--plot", "out.png"},
         {"sound.wav", "models/SVM2.txt"},
         {"out.png"}},
        {"PrpdTrain",
         {"prpd", "train"},
         {"--surface", "sound.wav", "--suspension", "other.wav", "-o", "out"},
         {"sound.wav", "other.wav"},
         {"out/SVM1.txt", "out/SVM2.txt"},
         false},
        {"Gasleak",
         {"gasleak"},
         {"--table", "table.txt", "measurements.csv", "--distance", "1.5", "--plot", "out.png"},
         {"table.txt", "measurements.csv"},
         {"out.png"},
         true,
         {"measurements.csv"}},
        {"Pulses", {"pulses"}, {"sound.wav", "-o", "out.wav"}, {"sound.wav"}, {"out.wav"}},
        {"Calibrate", {"calibrate"}, {"pairs.csv"}, {"pairs.csv"}, {}},
        {"Track",
         {"track"},
         {"maps.kov", "-o", "out.csv", "--plot", "out.png"},
         {"maps.kov"},
         {"out.csv", "out.png"}},
    };
    return rows;
}

void writeInputs(const CommandRow& row, const Sandbox& sandbox)
{
    for (const std::string& input : row.inputs) {
        writeInput(sandbox.path(), input);
    }
    for (const std::string& output : row.outputs) {
        fs::create_directories((sandbox / output).parent_path());
    }
}

}  // namespace kovtools::tests
