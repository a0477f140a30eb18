#pragma once

// Paths as velmora-place takes them: absolute, and every step a real name.

#include <string>
#include <vector>

namespace Place {

// No ".", "..", empty step or trailing slash; "/" itself is clean.
bool isCleanPath(const std::string &path);
// The steps of a clean path, "/" having none.
std::vector<std::string> stepsOf(const std::string &path);
std::string parentOf(const std::string &path);
std::string nameOf(const std::string &path);

} // namespace Place
