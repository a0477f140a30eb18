#pragma once

// Opens a web page in the user's browser when a desktop session is there to show it (xdg-open, with the address
// as its one argument). Returns whether an opener was started.

#include <QString>

namespace UrlOpener {
bool openUrl(const QString &url);
} // namespace UrlOpener
