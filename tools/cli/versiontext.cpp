#include "tools/cli/versiontext.h"

#include <KOVDoaHandle/api/library.h>
#include <QtCore/QtGlobal>

#include <opencv2/core/version.hpp>

namespace kovtools {

namespace {

std::string compiler()
{
#if defined(__clang__)
    return std::string("clang ") + __clang_version__;
#elif defined(__GNUC__)
    return std::string("g++ ") + __VERSION__;
#else
    return "an unknown compiler";
#endif
}

}  // namespace

std::string versionText()
{
    return std::string("kovdoa ") + KOVTOOLS_VERSION + "\nlibrary " + Version() + "\nbuilt with " +
           compiler() + ", " + KOVTOOLS_BUILD_TYPE + "\nOpenCV " + CV_VERSION + "\nQt " + qVersion() +
           " (built with " + QT_VERSION_STR + ")";
}

}  // namespace kovtools
