#pragma once

// Hands a file to the desktop's opener (xdg-open), as double-clicking it in the file manager would.

#include <QString>

namespace DesktopOpener {
// true when the opener could be started; what it then does with the file is the desktop's business.
bool open(const QString &path);
} // namespace DesktopOpener
