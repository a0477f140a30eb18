#pragma once

// The verbs of velmora-place, the program that puts items in place for the installer. It runs as the user, or as
// root through the escalation command, so it takes no Qt, no shell and no search path: fixed verbs and absolute
// clean paths. Root working for another user writes only into the application folders that the configuration file
// names (see AllowedFolders.h) and reads only what that user may read.

#include <string>
#include <vector>

namespace Place {

// Exit statuses: the verb succeeded, it failed (after its line on standard error), or the words were refused.
constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kRefused = 2;

// The administrator's list of application folders.
constexpr const char *kConfiguration = VELMORA_PLACE_CONFIGURATION;

// words: the verb and its paths, as given on the command line.
int run(const std::vector<std::string> &words, const std::string &configuration = kConfiguration);

} // namespace Place
