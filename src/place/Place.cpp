#include "place/Place.h"

#include "place/AllowedFolders.h"
#include "place/Caller.h"
#include "place/CleanPath.h"
#include "place/Tree.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Place {

namespace {

using Words = std::vector<std::string>;

// What a verb does to each of its paths decides how much of the file system it may name.
enum class Role {
    Read,       // only read, with the caller's rights: any clean absolute path but "/"
    Changed,    // replaced or removed: never "/" nor a folder right under it; for another user, in an app folder
    MergedInto, // only added to: "/" too, for a package at the top of its volume; for another user, an app folder
};

bool mayName(const std::string &path, Role role)
{
    const std::size_t steps = stepsOf(path).size();
    return isCleanPath(path) && (role == Role::MergedInto || steps >= (role == Role::Changed ? 2 : 1));
}

// For the user, a written path is taken as it resolves when we start, so that a link placed by our own writes is
// never followed later (root's walk follows no link at all).
std::string resolvedAtStart(const std::string &path)
{
    std::string existing = path;
    struct stat info = {};
    while (existing != "/" && lstat(existing.c_str(), &info) != 0) {
        existing = parentOf(existing);
    }
    char resolved[PATH_MAX] = {};
    if (!realpath(existing.c_str(), resolved)) {
        return path;
    }
    const std::string rest = path.substr(existing == "/" ? 0 : existing.size());
    return std::string(resolved) == "/" ? (rest.empty() ? "/" : rest) : resolved + rest;
}

struct Job
{
    Tree &tree;
    const Caller &caller;
    const Words &paths;
};

bool exists(const Job &job, const std::string &path)
{
    const AsCaller reading(job.caller);
    struct stat info = {};
    return lstat(path.c_str(), &info) == 0;
}

bool placeOne(const Job &job, bool make)
{
    const std::string &item = job.paths[0];
    const std::string &target = job.paths[1];
    if (!exists(job, item)) {
        return fail("nothing to place at " + item);
    }
    const Fd source = job.tree.openSourceFolder(parentOf(item));
    const Fd folder = job.tree.openFolder(parentOf(target), make);
    return source.valid() && folder.valid() &&
           job.tree.place(source.get(), nameOf(item), folder.get(), nameOf(target), target);
}

bool remove(const Job &job)
{
    const std::string &path = job.paths[0];
    struct stat info = {};
    if (lstat(path.c_str(), &info) != 0 && errno == ENOENT) {
        return true;
    }
    const Fd folder = job.tree.openFolder(parentOf(path), false);
    return folder.valid() && job.tree.remove(folder.get(), nameOf(path), path);
}

// Pairs of a folder and the folder its contents go into: a whole package in one run. Everything is checked before
// anything is written, so a package that would be refused halfway leaves nothing of it behind.
bool merge(const Job &job)
{
    for (const bool check : {true, false}) {
        for (std::size_t i = 0; i + 1 < job.paths.size(); i += 2) {
            const Fd source = job.tree.openSourceFolder(job.paths[i]);
            const Fd target = job.tree.openFolder(job.paths[i + 1], !check);
            if (check && !target.valid() && errno == ENOENT) {
                continue; // made when its turn comes
            }
            if (!source.valid() || !target.valid() ||
                !job.tree.merge(source.get(), target.get(), job.paths[i + 1], check)) {
                return false;
            }
        }
    }
    return true;
}

// Runs bsdtar with the caller's rights, its output going to out.
bool archiveAsCaller(const Job &job, const std::string &source, int out)
{
    const char *tool = access("/usr/bin/bsdtar", X_OK) == 0 ? "/usr/bin/bsdtar" : "/bin/bsdtar";
    const std::string folder = parentOf(source);
    const std::string name = nameOf(source);
    const pid_t child = fork();
    if (child == 0) {
        const Caller &caller = job.caller;
        const bool dropped = !caller.confined || (caller.adoptGroups() && setgid(caller.gid) == 0 &&
                                                  setuid(caller.uid) == 0 && setuid(0) != 0);
        if (dropped && dup2(out, STDOUT_FILENO) >= 0) {
            const char *argv[] = {tool, "--format",     "zip", "-cf",        "-",
                                  "-C", folder.c_str(), "--",  name.c_str(), nullptr};
            const char *environment[] = {"PATH=/usr/bin:/bin", "LC_ALL=C", nullptr};
            execve(tool, const_cast<char **>(argv), const_cast<char **>(environment));
        }
        _exit(127);
    }
    int status = 0;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return child > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// A zip archive that holds source's folder itself; an existing file at the archive's path is left alone. Readable by
// its owner only: as root, source may hold what others may not read.
bool archive(const Job &job)
{
    const std::string &source = job.paths[0];
    const std::string &zip = job.paths[1];
    const Fd folder = job.tree.openFolder(parentOf(zip), false);
    const std::string staging = hiddenName(nameOf(zip), "new");
    if (!folder.valid() || staging.empty()) {
        return fail("could not archive " + source);
    }
    const Fd out(openat(folder.get(), staging.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (out.valid() && archiveAsCaller(job, source, out.get()) &&
        renameat2(folder.get(), staging.c_str(), folder.get(), nameOf(zip).c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    unlinkat(folder.get(), staging.c_str(), 0);
    return fail("could not archive " + source);
}

struct Verb
{
    std::string_view name;
    std::vector<Role> roles;
    bool repeats; // the roles may be given again, as often as wanted
    bool (*act)(const Job &job);
};

const std::vector<Verb> &verbs()
{
    static const std::vector<Verb> table = {
        {"replace", {Role::Read, Role::Changed}, false, [](const Job &job) { return placeOne(job, true); }},
        {"merge", {Role::Read, Role::MergedInto}, true, merge},
        {"copy", {Role::Read, Role::Changed}, false, [](const Job &job) { return placeOne(job, false); }},
        {"remove", {Role::Changed}, false, remove},
        {"archive", {Role::Read, Role::Changed}, false, archive},
    };
    return table;
}

// Root working for another user writes only inside the application folders.
bool isAllowed(const std::string &path, Role role, const std::vector<std::string> &folders)
{
    return role == Role::Read || isInside(path, folders, role == Role::MergedInto);
}

} // namespace

int run(const std::vector<std::string> &words, const std::string &configuration)
{
    umask(022);
    for (const Verb &verb : verbs()) {
        if (words.empty() || words.front() != verb.name) {
            continue;
        }
        Words paths(words.begin() + 1, words.end());
        const std::size_t arity = verb.roles.size();
        if (paths.empty() || paths.size() % arity != 0 || (!verb.repeats && paths.size() != arity)) {
            break;
        }
        const Caller caller = Caller::find();
        const std::vector<std::string> folders = caller.confined ? readAllowedFolders(configuration) : Words();
        for (std::size_t i = 0; i < paths.size(); ++i) {
            const Role role = verb.roles[i % arity];
            if (!mayName(paths[i], role)) {
                fail("refused path " + paths[i]);
                return kRefused;
            }
            if (caller.confined && !isAllowed(paths[i], role, folders)) {
                fail("refused path " + paths[i] + ": not in an application folder named by " + configuration);
                return kRefused;
            }
            if (role != Role::Read && geteuid() != 0) {
                paths[i] = resolvedAtStart(paths[i]);
            }
        }
        if (!caller.adoptGroups()) {
            fail(std::string("could not take the caller's groups: ") + std::strerror(errno));
            return kFailed;
        }
        Tree tree(caller);
        return verb.act(Job{tree, caller, paths}) ? kDone : kFailed;
    }
    fail("usage: velmora-place replace ITEM TARGET | merge FOLDER TARGET... | copy SOURCE TARGET | remove PATH | "
         "archive SOURCE ZIP");
    return kRefused;
}

} // namespace Place
