#pragma once

// The settings file's format for QSettings: INI text that Qt's own INI format reads the same (and that reads what
// Qt's INI format writes), with a writer that checks every byte reached the disk.
//
// Qt 6.4's INI writer does not: its save file ignores a short write and a failed flush, so on a nearly full disk
// sync() reports no error and renames a cut file over the settings. Here a write that cannot complete makes sync()
// fail with QSettings::AccessError, and the old file stays as it was.
//
// Values are written as Qt's INI format writes texts, booleans, numbers and lists of texts; they read back as texts
// and lists of texts.

#include <QSettings>

namespace SettingsFile {

// Registered once; files keep the extension ".ini".
QSettings::Format format();

// Why the last settings write on this thread failed (the system's words), or "" when none did since the last call.
QString takeWriteFailure();

} // namespace SettingsFile
