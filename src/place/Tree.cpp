#include "place/Tree.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <iostream>

#include <dirent.h>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>

namespace Place {

namespace {

// Deeper than any application; it bounds the handles one walk keeps open.
constexpr int kMaxDepth = 200;
constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

bool isBundle(const std::string &name)
{
    return name.size() > 4 && name.compare(name.size() - 4, 4, ".app") == 0;
}

// A folder others may rename entries in could have a step swapped for a link; a sticky one lets them rename only
// their own entries.
bool isRootsAlone(const struct stat &info)
{
    const bool othersMayRename = (info.st_mode & (S_IWGRP | S_IWOTH)) != 0 && (info.st_mode & S_ISVTX) == 0;
    return S_ISDIR(info.st_mode) && info.st_uid == 0 && !othersMayRename;
}

std::string below(const std::string &folder, const std::string &name)
{
    return (folder == "/" ? std::string() : folder) + '/' + name;
}

mode_t currentMask()
{
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

std::array<timespec, 2> timesOf(const struct stat &info)
{
    return {info.st_atim, info.st_mtim};
}

bool writeAll(int fd, const char *data, std::size_t size)
{
    while (size > 0) {
        const ssize_t written = write(fd, data, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

// In the kernel where it can (a reflink on file systems that share blocks), else through one buffer.
bool copyBytes(int from, int to)
{
    for (;;) {
        const ssize_t copied = copy_file_range(from, nullptr, to, nullptr, std::size_t(1) << 30, 0);
        if (copied == 0) {
            return true;
        }
        if (copied < 0) {
            if (errno == EINTR) {
                continue;
            }
            if (errno != EXDEV && errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP) {
                return false;
            }
            break;
        }
    }
    static std::vector<char> buffer(std::size_t(1) << 20);
    for (;;) {
        const ssize_t got = read(from, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return got == 0;
        }
        if (!writeAll(to, buffer.data(), static_cast<std::size_t>(got))) {
            return false;
        }
    }
}

bool renameNoReplace(int folder, const std::string &from, const std::string &to)
{
    if (renameat2(folder, from.c_str(), folder, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    // File systems without the flag: the check and the rename are not one step, but the folder is root's alone, or
    // the user's own, when we get here.
    struct stat info = {};
    return errno == EINVAL && fstatat(folder, to.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT &&
           renameat(folder, from.c_str(), folder, to.c_str()) == 0;
}

} // namespace

bool fail(const std::string &what)
{
    std::cerr << "velmora-place: " << what << '\n';
    return false;
}

std::string hiddenName(const std::string &name, const char *purpose)
{
    std::array<unsigned char, 8> bytes = {};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        return {};
    }
    std::string hex;
    for (const unsigned char byte : bytes) {
        hex += "0123456789abcdef"[byte >> 4];
        hex += "0123456789abcdef"[byte & 15];
    }
    return '.' + name.substr(0, 200) + '.' + hex + '.' + purpose;
}

std::vector<std::string> listFolder(int folder, const std::string &shownAs, bool &ok)
{
    std::vector<std::string> names;
    DIR *stream = fdopendir(dup(folder));
    ok = stream != nullptr;
    if (!stream) {
        fail("could not read " + shownAs + ": " + std::strerror(errno));
        return names;
    }
    rewinddir(stream);
    errno = 0;
    while (const dirent *entry = readdir(stream)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    ok = errno == 0 || fail("could not read " + shownAs + ": " + std::strerror(errno));
    closedir(stream);
    return names;
}

Fd Tree::enter(int folder, const std::string &name, const std::string &shownAs, bool make) const
{
    Fd entered(openat(folder, name.c_str(), kFolderFlags));
    if (!entered.valid() && errno == ENOENT && make) {
        if (mkdirat(folder, name.c_str(), 0755) != 0 && errno != EEXIST) {
            fail("could not make " + shownAs + ": " + std::strerror(errno));
            return Fd();
        }
        entered = Fd(openat(folder, name.c_str(), kFolderFlags));
    }
    if (!entered.valid()) {
        const int error = errno;
        if (error != ENOENT || make) {
            fail("could not enter " + shownAs + ": " + std::strerror(error));
        }
        errno = error;
        return Fd();
    }
    struct stat info = {};
    if (geteuid() == 0 && (fstat(entered.get(), &info) != 0 || !isRootsAlone(info))) {
        fail("will not work through " + shownAs + ": it is not root's alone");
        errno = EPERM;
        return Fd();
    }
    return entered;
}

Fd Tree::openFolder(const std::string &path, bool make) const
{
    Fd folder(open("/", kFolderFlags));
    std::string shown;
    for (std::size_t start = 1; folder.valid() && start < path.size();) {
        std::size_t end = path.find('/', start);
        end = end == std::string::npos ? path.size() : end;
        const std::string step = path.substr(start, end - start);
        shown += '/' + step;
        folder = enter(folder.get(), step, shown, make);
        start = end + 1;
    }
    return folder;
}

Fd Tree::openSourceFolder(const std::string &path) const
{
    const AsCaller reading(m_caller);
    Fd folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.valid()) {
        fail("could not read " + path + ": " + std::strerror(errno));
    }
    return folder;
}

Fd Tree::enterSource(int folder, const std::string &name) const
{
    const AsCaller reading(m_caller);
    return Fd(openat(folder, name.c_str(), kFolderFlags));
}

bool Tree::copyFile(int sourceFolder, const std::string &source, const struct stat &info, int folder,
                    const std::string &name)
{
    const auto key = std::make_pair(info.st_dev, info.st_ino);
    if (info.st_nlink > 1) {
        if (const auto first = m_copied.find(key); first != m_copied.end()) {
            return linkat(m_copyRoot, first->second.c_str(), folder, name.c_str(), 0) == 0;
        }
    }
    Fd in;
    {
        const AsCaller reading(m_caller);
        in = Fd(openat(sourceFolder, source.c_str(), O_RDONLY | O_NOFOLLOW | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    }
    struct stat opened = {};
    if (!in.valid() || fstat(in.get(), &opened) != 0 || !S_ISREG(opened.st_mode) || opened.st_ino != info.st_ino ||
        opened.st_dev != info.st_dev) {
        return false;
    }
    // Modes without set-id bits and without what our umask takes away; the owner is whoever runs us.
    const Fd out(openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    const auto times = timesOf(info);
    if (!out.valid() || !copyBytes(in.get(), out.get()) ||
        fchmod(out.get(), info.st_mode & 0777 & ~currentMask()) != 0 || futimens(out.get(), times.data()) != 0) {
        return false;
    }
    if (info.st_nlink > 1) {
        m_copied[key] = m_copyPath;
    }
    return true;
}

bool Tree::copyFolder(int sourceFolder, const std::string &source, int folder, const std::string &name, int depth)
{
    const Fd from = enterSource(sourceFolder, source);
    struct stat info = {};
    if (!from.valid() || fstat(from.get(), &info) != 0 || mkdirat(folder, name.c_str(), 0700) != 0) {
        return false;
    }
    const Fd to(openat(folder, name.c_str(), kFolderFlags));
    bool ok = to.valid();
    const std::string path = m_copyPath;
    for (const std::string &entry : ok ? listFolder(from.get(), source, ok) : std::vector<std::string>()) {
        m_copyPath = path + '/' + entry;
        if (!ok || !copy(from.get(), entry, to.get(), entry, depth + 1)) {
            return false;
        }
    }
    const auto times = timesOf(info);
    return ok && fchmod(to.get(), info.st_mode & 0777 & ~currentMask()) == 0 && futimens(to.get(), times.data()) == 0;
}

bool Tree::copy(int sourceFolder, const std::string &source, int folder, const std::string &name, int depth)
{
    struct stat info = {};
    {
        const AsCaller reading(m_caller);
        if (fstatat(sourceFolder, source.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
            return fail("could not read " + m_copyPath + ": " + std::strerror(errno));
        }
    }
    if (depth > kMaxDepth) {
        return fail("too deep: " + m_copyPath);
    }
    if (S_ISDIR(info.st_mode)) {
        return copyFolder(sourceFolder, source, folder, name, depth) || fail("could not copy " + m_copyPath);
    }
    if (S_ISREG(info.st_mode)) {
        return copyFile(sourceFolder, source, info, folder, name) || fail("could not copy " + m_copyPath);
    }
    if (!S_ISLNK(info.st_mode)) {
        return fail("will not copy " + m_copyPath + ": not a file, folder or link");
    }
    std::vector<char> target(PATH_MAX + 1);
    ssize_t length = 0;
    {
        const AsCaller reading(m_caller);
        length = readlinkat(sourceFolder, source.c_str(), target.data(), target.size() - 1);
    }
    const auto times = timesOf(info);
    return (length >= 0 && symlinkat(std::string(target.data(), length).c_str(), folder, name.c_str()) == 0 &&
            utimensat(folder, name.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) == 0) ||
           fail("could not copy the link " + m_copyPath);
}

bool Tree::place(int sourceFolder, const std::string &source, int folder, const std::string &name,
                 const std::string &shownAs)
{
    const std::string staging = hiddenName(name, "new");
    m_copied.clear();
    m_copyRoot = folder;
    m_copyPath = staging;
    if (staging.empty() || !copy(sourceFolder, source, folder, staging, 0)) {
        remove(folder, staging, shownAs);
        return fail("could not prepare " + shownAs);
    }
    struct stat info = {};
    if (fstatat(folder, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT) {
        return renameNoReplace(folder, staging, name) ||
               (remove(folder, staging, shownAs), fail("could not place " + shownAs + ": " + std::strerror(errno)));
    }
    if (renameat2(folder, staging.c_str(), folder, name.c_str(), RENAME_EXCHANGE) == 0) {
        return remove(folder, staging, shownAs); // now the old copy; a failure is reported and the new one stays
    }
    // File systems that cannot swap: the old copy is put aside for the moment of one rename.
    const std::string aside = hiddenName(name, "old");
    if (errno != EINVAL || aside.empty() || !renameNoReplace(folder, name, aside)) {
        remove(folder, staging, shownAs);
        return fail("could not replace " + shownAs);
    }
    if (!renameNoReplace(folder, staging, name)) {
        remove(folder, staging, shownAs);
        renameNoReplace(folder, aside, name);
        return fail("could not replace " + shownAs);
    }
    return remove(folder, aside, shownAs);
}

bool Tree::merge(int sourceFolder, int folder, const std::string &shownAs, bool check, int depth)
{
    bool ok = depth <= kMaxDepth || fail("too deep: " + shownAs);
    std::vector<std::string> names;
    if (ok) {
        const AsCaller reading(m_caller);
        names = listFolder(sourceFolder, shownAs, ok);
    }
    for (const std::string &name : names) {
        const std::string destination = below(shownAs, name);
        struct stat source = {};
        struct stat standing = {};
        {
            const AsCaller reading(m_caller);
            if (!ok || fstatat(sourceFolder, name.c_str(), &source, AT_SYMLINK_NOFOLLOW) != 0) {
                return false;
            }
        }
        const bool stands = fstatat(folder, name.c_str(), &standing, AT_SYMLINK_NOFOLLOW) == 0;
        const bool sourceIsFolder = S_ISDIR(source.st_mode);
        if (!sourceIsFolder && !S_ISREG(source.st_mode) && !S_ISLNK(source.st_mode)) {
            return fail("will not copy " + destination + ": not a file, folder or link");
        }
        if (stands && S_ISDIR(standing.st_mode)) {
            if (!sourceIsFolder) {
                return fail("will not replace the folder " + destination + " with a file");
            }
            if (!isBundle(name)) {
                const Fd into = enter(folder, name, destination, false);
                const Fd from = enterSource(sourceFolder, name);
                if (!into.valid() || !from.valid() || !merge(from.get(), into.get(), destination, check, depth + 1)) {
                    return false;
                }
                continue;
            }
        } else if (stands && S_ISLNK(standing.st_mode) && sourceIsFolder) {
            // A system's /bin or /lib may be such a link: its folder must not replace it.
            return fail("will not replace the link " + destination + " with a folder");
        }
        if (!check && !place(sourceFolder, name, folder, name, destination)) {
            return false;
        }
    }
    return ok;
}

bool Tree::remove(int folder, const std::string &name, const std::string &shownAs, int depth) const
{
    struct stat info = {};
    if (fstatat(folder, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno == ENOENT || fail("could not remove " + shownAs + ": " + std::strerror(errno));
    }
    if (S_ISDIR(info.st_mode)) {
        const Fd inside(openat(folder, name.c_str(), kFolderFlags));
        bool ok = inside.valid() && depth <= kMaxDepth;
        for (const std::string &entry : ok ? listFolder(inside.get(), shownAs, ok) : std::vector<std::string>()) {
            ok = ok && remove(inside.get(), entry, below(shownAs, entry), depth + 1);
        }
        return (ok && unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0) || fail("could not remove " + shownAs);
    }
    return unlinkat(folder, name.c_str(), 0) == 0 || fail("could not remove " + shownAs + ": " + std::strerror(errno));
}

} // namespace Place
