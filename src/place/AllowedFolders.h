#pragma once

// The folders where root may write for another user: the application folders of the machine, named by the
// administrator in a configuration file that only root can change. Nothing the caller chooses (settings, the store,
// a package's own words) can widen them.

#include <string>
#include <vector>

namespace Place {

// Without a configuration file: the application folders of the volume at "/".
const std::vector<std::string> &defaultApplicationFolders();

// The folders the file at path names, one absolute path a line ("#" starts a comment), or the default when there is
// no file. A file that root does not own, or that others may change, names nothing: every write is refused.
std::vector<std::string> readAllowedFolders(const std::string &path);

// Whether path lies inside one of folders (or is one of them, when equalIsInside).
bool isInside(const std::string &path, const std::vector<std::string> &folders, bool equalIsInside);

} // namespace Place
