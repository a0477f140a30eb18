#pragma once

// The process's cookies kept across runs: the persistent ones (those with an expiry date still ahead) of
// HttpCookieJar::shared(), in "cookies" in the data folder, private to the user (mode 0600) and written whole or
// not at all. Session cookies end with the process, as a browser's do.

#include <QString>

namespace CookieFile {

QString path();
// Adds the kept cookies to the shared jar; a missing file adds nothing.
void load();
// Writes the jar's persistent cookies when they differ from what the file holds; false when writing failed.
bool save();

} // namespace CookieFile
