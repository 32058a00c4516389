// Which texts can be names of files at all.
#ifndef KOVDOA_FILENAME_P_H
#define KOVDOA_FILENAME_P_H

#include <QtCore/QString>

namespace KOVResult {

// Qt complains aloud about other names; here an unusable file is simply not there.
inline bool isFileName(const QString& path)
{
    return !path.isEmpty() && !path.contains(QChar(0));
}

}  // namespace KOVResult

#endif
