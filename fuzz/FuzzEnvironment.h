#pragma once

// What every fuzz target sets up once, before its first input.

#include <QString>

namespace FuzzEnvironment {

// Drops the program's log lines and Qt's warnings: a fuzzer feeds them malformed input by the million, and
// printing each line would slow it to a crawl. Fatal messages still abort.
void silenceMessages();

// Points HOME, the XDG folders and TMPDIR into a fresh private folder (removed at exit), so that a target that
// reaches the settings or the data folder never touches the user's own files. Returns the folder.
QString isolateFiles();

} // namespace FuzzEnvironment
