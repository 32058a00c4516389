#include "tools/support/silence.h"

#include <fcntl.h>
#include <unistd.h>

#include <QtCore/qlogging.h>

#include <cstdio>
#include <opencv2/core/utility.hpp>
#include <opencv2/core/utils/logger.hpp>

namespace kovtools {

namespace {

void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

int dropOpenCvError(int, const char*, const char*, const char*, int, void*)
{
    return 0;
}

}  // namespace

void silenceLibraries()
{
    qInstallMessageHandler(dropMessage);
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    // Without this OpenCV prints every error before it throws the exception that we catch.
    cv::redirectError(dropOpenCvError);
}

SilencedStderr::SilencedStderr()
{
    std::fflush(stderr);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0) {
        return;
    }
    m_saved = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    if (m_saved >= 0) {
        dup2(nowhere, STDERR_FILENO);
    }
    close(nowhere);
}

SilencedStderr::~SilencedStderr()
{
    if (m_saved >= 0) {
        std::fflush(stderr);
        dup2(m_saved, STDERR_FILENO);
        close(m_saved);
    }
}

}  // namespace kovtools
