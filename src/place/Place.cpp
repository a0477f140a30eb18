#include "Place.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string_view>

#include <fcntl.h>
#include <spawn.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Words = std::vector<std::string>;

// What a verb does to each of its paths decides how much of the file system it may name.
enum class Role {
    Read,       // only read: any clean absolute path
    Changed,    // replaced or removed: never "/" nor a folder right under it
    MergedInto, // only added to: "/" too, for a package that installs at the top of its volume
};

bool fail(const std::string &what)
{
    std::cerr << "velmora-place: " << what << '\n';
    return false;
}

// Absolute, and every step a real name: no ".", "..", empty step or trailing slash.
bool isCleanPath(const std::string &path, Role role)
{
    if (role == Role::MergedInto && path == "/") {
        return true;
    }
    if (path.size() < 2 || path.size() >= PATH_MAX || path.front() != '/' || path.back() == '/') {
        return false;
    }
    int steps = 0;
    for (std::size_t start = 1; start <= path.size(); ++steps) {
        std::size_t end = path.find('/', start);
        end = end == std::string::npos ? path.size() : end;
        const std::string_view step(path.data() + start, end - start);
        if (step.empty() || step == "." || step == "..") {
            return false;
        }
        start = end + 1;
    }
    return role != Role::Changed || steps >= 2;
}

bool lexists(const std::string &path)
{
    struct stat info = {};
    return lstat(path.c_str(), &info) == 0;
}

std::string parentOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? std::string("/") : path.substr(0, slash);
}

// Runs one of the system's tools by its fixed path with a fixed environment: as root the caller's search path and
// variables must not choose what runs.
bool runTool(const char *name, const Words &arguments)
{
    std::string tool = std::string("/usr/bin/") + name;
    if (access(tool.c_str(), X_OK) != 0) {
        tool = std::string("/bin/") + name;
    }
    std::vector<char *> argv = {tool.data()};
    Words words = arguments;
    for (std::string &word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    char path[] = "PATH=/usr/bin:/bin";
    char locale[] = "LC_ALL=C";
    char *environment[] = {path, locale, nullptr};
    pid_t child = 0;
    if (const int error = posix_spawn(&child, tool.c_str(), nullptr, nullptr, argv.data(), environment)) {
        return fail(tool + ": " + std::strerror(error));
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Links stay links and are never followed, modes and times are kept; the owner becomes whoever runs us, so that
// what root puts in a system folder is root's and not the downloading user's.
bool copy(const std::string &source, const std::string &destination)
{
    return runTool("cp", {"-a", "--no-preserve=ownership", "-T", "--", source, destination}) ||
           fail("could not copy " + source + " to " + destination);
}

bool removeTree(const std::string &path)
{
    return !lexists(path) || runTool("rm", {"-rf", "--", path}) || fail("could not remove " + path);
}

// Never replaces what is at destination.
bool rename(const std::string &source, const std::string &destination)
{
    if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, destination.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    // File systems without the flag: the check and the rename are not one step, but nothing of ours races here.
    if (errno == EINVAL && !lexists(destination) && std::rename(source.c_str(), destination.c_str()) == 0) {
        return true;
    }
    return fail("could not rename " + source + " to " + destination + ": " + std::strerror(errno));
}

bool makeFolder(const std::string &path)
{
    std::error_code error;
    std::filesystem::create_directories(path, error);
    return !error || fail("could not make " + path + ": " + error.message());
}

// Hidden, so that a scan running meanwhile does not list the old copy as an app of its own.
std::string asideName(const std::string &target)
{
    unsigned char bytes[8] = {};
    if (getrandom(bytes, sizeof bytes, 0) != sizeof bytes) {
        return {};
    }
    std::string hex;
    for (const unsigned char byte : bytes) {
        hex += "0123456789abcdef"[byte >> 4];
        hex += "0123456789abcdef"[byte & 15];
    }
    const std::size_t slash = target.rfind('/');
    return target.substr(0, slash + 1) + '.' + target.substr(slash + 1) + '.' + hex + ".old";
}

// The installed copy is renamed aside until the new one is complete, put back when the copy fails, and removed
// only after success.
bool replace(const Words &paths)
{
    const std::string &item = paths[0];
    const std::string &target = paths[1];
    if (!lexists(item)) {
        return fail("nothing to place at " + item);
    }
    const bool hadOldCopy = lexists(target);
    const std::string aside = asideName(target);
    if (aside.empty() || !makeFolder(parentOf(target)) || (hadOldCopy && !rename(target, aside))) {
        return false;
    }
    if (!copy(item, target)) {
        removeTree(target);
        if (hadOldCopy && !rename(aside, target)) {
            fail("the old copy of " + target + " stays at " + aside);
        }
        return false;
    }
    if (hadOldCopy && !removeTree(aside)) {
        fail("the old copy of " + target + " stays at " + aside);
    }
    return true;
}

// Adds what folder holds to target entry by entry, so that target itself keeps its owner, mode and times.
bool merge(const Words &paths)
{
    const std::string &folder = paths[0];
    const std::string &target = paths[1];
    if (!makeFolder(target)) {
        return false;
    }
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        if (!copy(folder + '/' + name, (target == "/" ? "" : target) + '/' + name)) {
            return false;
        }
    }
    return !error || fail("could not read " + folder + ": " + error.message());
}

// A zip archive that holds source's folder itself.
bool archive(const Words &paths)
{
    const std::string &source = paths[0];
    return runTool("bsdtar", {"--format", "zip", "-cf", paths[1], "-C", parentOf(source), "--",
                              source.substr(source.rfind('/') + 1)}) ||
           fail("could not archive " + source);
}

struct Verb
{
    std::string_view name;
    std::vector<Role> roles;
    bool (*act)(const Words &paths);
};

const std::vector<Verb> &verbs()
{
    static const std::vector<Verb> table = {
        {"replace", {Role::Read, Role::Changed}, replace},
        {"merge", {Role::Read, Role::MergedInto}, merge},
        {"copy", {Role::Read, Role::Changed}, [](const Words &p) { return copy(p[0], p[1]); }},
        {"remove", {Role::Changed}, [](const Words &p) { return removeTree(p[0]); }},
        {"archive", {Role::Read, Role::Changed}, archive},
    };
    return table;
}

} // namespace

namespace Place {

int run(const std::vector<std::string> &words)
{
    umask(022);
    for (const Verb &verb : verbs()) {
        if (words.empty() || words.front() != verb.name) {
            continue;
        }
        const Words paths(words.begin() + 1, words.end());
        if (paths.size() != verb.roles.size()) {
            break;
        }
        for (std::size_t i = 0; i < paths.size(); ++i) {
            if (!isCleanPath(paths[i], verb.roles[i])) {
                fail("refused path " + paths[i]);
                return kRefused;
            }
        }
        return verb.act(paths) ? kDone : kFailed;
    }
    fail("usage: velmora-place replace|merge|copy|remove|archive PATH...");
    return kRefused;
}

} // namespace Place
