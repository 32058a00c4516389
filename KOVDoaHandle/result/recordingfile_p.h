// How the bytes of a recording get into its file.
#ifndef KOVDOA_RECORDINGFILE_P_H
#define KOVDOA_RECORDINGFILE_P_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <string>

namespace KOVResult {

// Both open and close the file, and do nothing, silently, when it cannot be opened.

// Creates or empties the file at `path` and writes `bytes`. False when the disk has no room for them: the file is then
// empty, and begun properly by another try.
bool startFile(const QString& path, const QByteArray& bytes);

// Appends `bytes` as a whole or not at all: half a record would spoil the ones that follow it.
void appendToFile(const QString& path, const std::string& bytes);

}  // namespace KOVResult

#endif
