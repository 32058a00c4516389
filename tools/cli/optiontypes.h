// Options whose values are read strictly: what is no value of the kind, or out of range, is an error that
// names the option, the text and what is expected.
#ifndef KOVTOOLS_OPTIONTYPES_H
#define KOVTOOLS_OPTIONTYPES_H

#include <cstdint>
#include <filesystem>
#include <opencv2/core/types.hpp>
#include <string>
#include <vector>

#include "tools/cli/commandsyntax.h"

namespace kovtools {

// The initial value of `target` is the default that the help shows. Bounds are inclusive.
OptionSyntax addInteger(const CommandSyntax& command, const std::string& name, int& target, int low, int high,
                        const std::string& help);
OptionSyntax addSeed(const CommandSyntax& command, const std::string& name, std::uint64_t& target,
                     const std::string& help);
OptionSyntax addNumber(const CommandSyntax& command, const std::string& name, double& target, double low,
                       double high, const std::string& help);

// "640x480": two whole numbers, each within its bounds; `kind` is shown in the help. Stored as width = first
// number, height = second. Without a default.
struct SizeBounds
{
    cv::Size low;
    cv::Size high;
};
OptionSyntax addSize(const CommandSyntax& command, const std::string& name, cv::Size& target,
                     const SizeBounds& bounds, const std::string& kind, const std::string& help);

// `text` as an absolute path; only what means nothing goes: "./a" is "a", "folder/" is "folder". Throws an error of the
// option `name` when the working directory is gone.
std::filesystem::path absolutePath(const std::string& name, const std::string& text);

// A file or folder; stored as an absolute path, because the program changes its working directory later.
OptionSyntax addPath(const CommandSyntax& command, const std::string& name, std::filesystem::path& target,
                     const std::string& kind, const std::string& help);

// Any number of files, each stored like that.
OptionSyntax addPaths(const CommandSyntax& command, const std::string& name,
                      std::vector<std::filesystem::path>& target, const std::string& kind,
                      const std::string& help);

// "A:B", "A:", ":B" or "A": frames from 1, both ends included.
struct FrameRange
{
    int first = 1;
    int last = 0;  // 0: to the end
};
OptionSyntax addFrameRange(const CommandSyntax& command, const std::string& name, FrameRange& target,
                           const std::string& help);

// Sizes of pictures that this program makes, pixels.
extern const SizeBounds pictureBounds;

}  // namespace kovtools

#endif
