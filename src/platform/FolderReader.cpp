#include "platform/FolderReader.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

FileIdentity identityFrom(const struct stat &info)
{
    return {quint64(info.st_dev), quint64(info.st_ino)};
}

FolderReader::Kind kindOf(mode_t mode)
{
    return S_ISDIR(mode)   ? FolderReader::Kind::Folder
           : S_ISREG(mode) ? FolderReader::Kind::File
                           : FolderReader::Kind::Other;
}

} // namespace

FolderReader::FolderReader(const QByteArray &path)
{
    m_fd = open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    struct stat info = {};
    if (m_fd >= 0 && fstat(m_fd, &info) == 0 && (m_dir = fdopendir(m_fd))) {
        m_identity = identityFrom(info);
        return;
    }
    m_failure = QString::fromLocal8Bit(std::strerror(errno));
    m_missing = errno == ENOENT;
    if (m_fd >= 0) {
        close(m_fd);
        m_fd = -1;
    }
}

FolderReader::~FolderReader()
{
    if (m_dir) {
        closedir(static_cast<DIR *>(m_dir)); // closes m_fd too
    }
}

std::vector<FolderReader::Entry> FolderReader::entries()
{
    std::vector<Entry> entries;
    if (!m_dir) {
        return entries;
    }
    while (const dirent *entry = readdir(static_cast<DIR *>(m_dir))) {
        const char *name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) {
            continue;
        }
        // The listing's own type saves a system call for all but links (and file systems that give no type).
        bool isLink = entry->d_type == DT_LNK;
        Kind kind = entry->d_type == DT_DIR ? Kind::Folder : entry->d_type == DT_REG ? Kind::File : Kind::Other;
        struct stat info = {};
        if (entry->d_type == DT_UNKNOWN) {
            if (fstatat(m_fd, name, &info, AT_SYMLINK_NOFOLLOW) != 0) {
                continue; // gone
            }
            isLink = S_ISLNK(info.st_mode);
            kind = kindOf(info.st_mode);
        }
        if (isLink) {
            if (fstatat(m_fd, name, &info, 0) != 0) {
                continue; // a dangling link
            }
            kind = kindOf(info.st_mode);
        }
        entries.push_back({QByteArray(name), kind, isLink});
    }
    std::sort(entries.begin(), entries.end(), [](const Entry &a, const Entry &b) { return a.name < b.name; });
    return entries;
}

std::optional<FileIdentity> FolderReader::identityOf(const QByteArray &name) const
{
    struct stat info = {};
    if (m_fd < 0 || fstatat(m_fd, name.constData(), &info, 0) != 0) {
        return std::nullopt;
    }
    return identityFrom(info);
}

qsizetype FolderReader::longestPath()
{
    return PATH_MAX - 1;
}
