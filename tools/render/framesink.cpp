#include "tools/render/framesink.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "tools/pictures/picturecodec.h"
#include "tools/render/videofile.h"
#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"

namespace kovtools {

namespace fs = std::filesystem;

namespace {

std::string lowerExtension(const fs::path& path)
{
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return extension;
}

class PngFolder : public FrameSink
{
public:
    explicit PngFolder(fs::path folder) : m_folder(std::move(folder))
    {
        std::error_code error;
        if (fs::exists(m_folder, error) && !fs::is_directory(m_folder, error)) {
            throw DataError("a file of the name " + inQuotes(m_folder) +
                            " exists; the pictures need a folder");
        }
        fs::create_directories(m_folder, error);
        if (!fs::is_directory(m_folder, error)) {
            throw DataError("cannot create the folder " + inQuotes(m_folder));
        }
    }

    void add(const cv::Mat& picture, int number) override
    {
        std::array<char, 32> name{};
        std::snprintf(name.data(), name.size(), "frame-%05d.png", number);
        writePng(m_folder / name.data(), picture);
    }

    void finish() override {}

private:
    fs::path m_folder;
};

}  // namespace

bool isVideoName(const fs::path& target)
{
    const std::string extension = lowerExtension(target);
    return extension == ".mp4" || extension == ".avi";
}

void checkFrameSinkName(const fs::path& target)
{
    static constexpr std::array<const char*, 10> others{".mov", ".mkv", ".webm", ".gif",  ".wmv",
                                                        ".png", ".jpg", ".jpeg", ".tiff", ".bmp"};
    const std::string extension = lowerExtension(target);
    if (std::find(others.begin(), others.end(), extension) != others.end()) {
        throw UsageError("-o " + inQuotes(target.filename()) +
                         " is neither a folder (for PNG files) nor a name ending in .mp4 or .avi");
    }
}

std::unique_ptr<FrameSink> openFrameSink(const fs::path& target, cv::Size picture, double frameRate)
{
    checkFrameSinkName(target);
    if (isVideoName(target)) {
        return std::make_unique<VideoFile>(target, picture, frameRate);
    }
    return std::make_unique<PngFolder>(target);
}

void checkPngName(const std::string& option, const fs::path& target)
{
    if (lowerExtension(target) != ".png") {
        throw UsageError(option + " " + inQuotes(target.filename()) +
                         " is a PNG picture; its name must end in .png");
    }
}

void writePng(const fs::path& target, const cv::Mat& picture)
{
    PartialFile file(target);
    writePng(file, picture);
    file.commit();
}

void writePng(PartialFile& file, const cv::Mat& picture)
{
    const std::vector<unsigned char> bytes = pictureCodec().encodePng(picture);
    file.write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

}  // namespace kovtools
