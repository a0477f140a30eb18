#pragma once

// Showing a file selected in the desktop's file manager (org.freedesktop.FileManager1.ShowItems on the session
// bus); where no file manager answers, its folder is opened instead.

#include <QString>

namespace FileManager {

// true when the file manager or the opener was asked.
bool showItem(const QString &path);

} // namespace FileManager
