#include "Place.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
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

bool isRealFolder(const std::string &path)
{
    struct stat info = {};
    return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool isLink(const std::string &path)
{
    struct stat info = {};
    return lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode);
}

std::string parentOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? std::string("/") : path.substr(0, slash);
}

std::string childOf(const std::string &folder, const std::string &name)
{
    return (folder == "/" ? std::string() : folder) + '/' + name;
}

// As root, every folder that exists on the way to path must be a real folder of root's that no one else may rename
// entries in (sticky folders aside); otherwise its owner could swap a step for a link and steer us anywhere.
bool onRootsWay(const std::string &path)
{
    if (geteuid() != 0) {
        return true;
    }
    for (std::string folder = parentOf(path);; folder = parentOf(folder)) {
        struct stat info = {};
        if (lstat(folder.c_str(), &info) == 0) {
            const bool othersMayRename = (info.st_mode & (S_IWGRP | S_IWOTH)) != 0 && (info.st_mode & S_ISVTX) == 0;
            if (!S_ISDIR(info.st_mode) || info.st_uid != 0 || othersMayRename) {
                return fail("will not work through " + folder + ": it is not root's alone");
            }
        }
        if (folder == "/") {
            return true;
        }
    }
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
    // File systems without the flag: the check and the rename are not one step, but the folder is not the user's
    // when it matters (we run as root only where the user may not write).
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

// A hidden name beside path, so that a scan running meanwhile does not list it as an app of its own.
std::string hiddenBeside(const std::string &path, const char *purpose)
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
    const std::size_t slash = path.rfind('/');
    return path.substr(0, slash + 1) + '.' + path.substr(slash + 1) + '.' + hex + '.' + purpose;
}

// A second guard behind the copy, which gives no set-id bit: what the user downloaded must not become a set-id
// program of root's, nor a device node. Never follows a link.
int checkPlaced(const char *path, const struct stat *info, int kind, FTW *)
{
    constexpr mode_t setId = S_ISUID | S_ISGID;
    if (kind == FTW_NS || kind == FTW_DNR || S_ISCHR(info->st_mode) || S_ISBLK(info->st_mode)) {
        return -1;
    }
    if (S_ISLNK(info->st_mode) || (info->st_mode & setId) == 0) {
        return 0;
    }
    return fchmodat(AT_FDCWD, path, info->st_mode & 07777 & ~setId, AT_SYMLINK_NOFOLLOW);
}

// Links stay links and are never followed; times and hard links are kept; modes are the source's without set-id
// bits and without the write bits our umask takes away; no owner, access list or extended attribute (a file
// capability among them) comes along, so what root places is root's and grants nothing the user chose.
bool copy(const std::string &source, const std::string &destination)
{
    return runTool("cp", {"-R", "-P", "--preserve=timestamps,links", "-T", "--", source, destination}) ||
           fail("could not copy " + source + " to " + destination);
}

// Copies source to a hidden name beside destination, then swaps it in: anyone looking at destination sees the old
// item or the whole new one, never a part, the old one stays until the new one is complete, and nothing is written
// through a link that stood there.
bool place(const std::string &source, const std::string &destination)
{
    const std::string staging = hiddenBeside(destination, "new");
    if (staging.empty() || !copy(source, staging) || nftw(staging.c_str(), checkPlaced, 16, FTW_PHYS) != 0) {
        removeTree(staging);
        return fail("could not prepare " + destination);
    }
    if (!lexists(destination)) {
        const bool placed = rename(staging, destination);
        if (!placed) {
            removeTree(staging);
        }
        return placed;
    }
    const bool swapped = renameat2(AT_FDCWD, staging.c_str(), AT_FDCWD, destination.c_str(), RENAME_EXCHANGE) == 0;
    const int swapError = errno;
    if (swapped) {
        removeTree(staging); // now the old copy; a failure is reported and the new one stays
        return true;
    }
    // File systems that cannot swap: the old copy is put aside for the moment of one rename.
    const std::string aside = hiddenBeside(destination, "old");
    if (swapError != EINVAL || aside.empty() || !rename(destination, aside)) {
        removeTree(staging);
        return fail("could not replace " + destination);
    }
    if (!rename(staging, destination)) {
        removeTree(staging);
        rename(aside, destination); // the old copy back; rename reports when it cannot
        return false;
    }
    removeTree(aside);
    return true;
}

bool listFolder(const std::string &folder, Words &names)
{
    DIR *stream = opendir(folder.c_str());
    if (!stream) {
        return fail("could not read " + folder + ": " + std::strerror(errno));
    }
    errno = 0;
    while (const dirent *entry = readdir(stream)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    const int error = errno;
    closedir(stream);
    return error == 0 || fail("could not read " + folder + ": " + std::strerror(error));
}

// Folders that both sides have are entered, so that an existing folder keeps its owner, mode and times; every other
// entry is placed whole.
bool mergeInto(const std::string &folder, const std::string &target)
{
    Words names;
    if (!listFolder(folder, names)) {
        return false;
    }
    for (const std::string &name : names) {
        const std::string source = childOf(folder, name);
        const std::string destination = childOf(target, name);
        const bool sourceIsFolder = isRealFolder(source);
        if (isRealFolder(destination)) {
            if (!sourceIsFolder) {
                return fail("will not replace the folder " + destination + " with a file");
            }
            if (!mergeInto(source, destination)) {
                return false;
            }
        } else if (sourceIsFolder && isLink(destination)) {
            // A system's /bin or /lib may be such a link: its folder must not replace it.
            return fail("will not replace the link " + destination + " with a folder");
        } else if (!place(source, destination)) {
            return false;
        }
    }
    return true;
}

bool replace(const Words &paths)
{
    return (lexists(paths[0]) || fail("nothing to place at " + paths[0])) && makeFolder(parentOf(paths[1])) &&
           place(paths[0], paths[1]);
}

// Pairs of a folder and the folder its contents go into: a whole package in one run.
bool merge(const Words &paths)
{
    for (std::size_t i = 0; i + 1 < paths.size(); i += 2) {
        // Each target is checked when its turn comes: an earlier one may have changed the way to it.
        if (!onRootsWay(childOf(paths[i + 1], "x")) || !makeFolder(paths[i + 1]) ||
            !mergeInto(paths[i], paths[i + 1])) {
            return false;
        }
    }
    return true;
}

// A zip archive that holds source's folder itself; an existing file at the archive's path is left alone. Readable by
// its owner only: as root, source may hold what others may not read.
bool archive(const Words &paths)
{
    const std::string &source = paths[0];
    const std::string staging = hiddenBeside(paths[1], "new");
    const mode_t mask = umask(077);
    const bool made = !staging.empty() && runTool("bsdtar", {"--format", "zip", "-cf", staging, "-C", parentOf(source),
                                                             "--", source.substr(source.rfind('/') + 1)});
    umask(mask);
    if (made && rename(staging, paths[1])) {
        return true;
    }
    removeTree(staging);
    return fail("could not archive " + source);
}

struct Verb
{
    std::string_view name;
    std::vector<Role> roles;
    bool repeats; // the roles may be given again, as often as wanted
    bool (*act)(const Words &paths);
};

const std::vector<Verb> &verbs()
{
    static const std::vector<Verb> table = {
        {"replace", {Role::Read, Role::Changed}, false, replace},
        {"merge", {Role::Read, Role::MergedInto}, true, merge},
        {"copy", {Role::Read, Role::Changed}, false, [](const Words &p) { return place(p[0], p[1]); }},
        {"remove", {Role::Changed}, false, [](const Words &p) { return removeTree(p[0]); }},
        {"archive", {Role::Read, Role::Changed}, false, archive},
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
        const std::size_t arity = verb.roles.size();
        if (paths.empty() || paths.size() % arity != 0 || (!verb.repeats && paths.size() != arity)) {
            break;
        }
        for (std::size_t i = 0; i < paths.size(); ++i) {
            if (!isCleanPath(paths[i], verb.roles[i % arity])) {
                fail("refused path " + paths[i]);
                return kRefused;
            }
        }
        return onRootsWay(paths.back()) && verb.act(paths) ? kDone : kFailed;
    }
    fail("usage: velmora-place replace ITEM TARGET | merge FOLDER TARGET... | copy SOURCE TARGET | remove PATH | "
         "archive SOURCE ZIP");
    return kRefused;
}

} // namespace Place
