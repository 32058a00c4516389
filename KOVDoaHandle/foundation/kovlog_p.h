// How the library's own sources write a diagnostic: KOVDOA_DEBUG("kovthread") << "text".
#ifndef KOVDOA_KOVLOG_P_H
#define KOVDOA_KOVLOG_P_H

#include <QtCore/QDebug>
#include <QtCore/QMessageLogger>

// `source` is the source file's name without folder and extension. The context is passed explicitly because Qt's
// own macros drop it in release builds, and the log files name the place in every build.
#define KOVDOA_LOGGER(source) QMessageLogger(source, __LINE__, Q_FUNC_INFO, "default")
#define KOVDOA_DEBUG(source) KOVDOA_LOGGER(source).debug()

#endif
