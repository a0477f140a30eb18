#pragma once

// Opening a file, an app or a web page the way the desktop would on a double click (xdg-open), detached from us.

#include <QString>

namespace DesktopOpener {

// Whether a graphical session is there to open anything in.
bool hasDisplay();
// true when the opener was started.
bool open(const QString &path);

} // namespace DesktopOpener
