#include "install/UnpackBudget.h"

#include "install/WorkFolder.h"
#include "platform/NativePath.h"

#include <filesystem>
#include <sys/statvfs.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

struct Space
{
    qint64 bytes = -1;
    qint64 inodes = -1;
};

Space freeSpace(const QString &folder)
{
    struct statvfs info = {};
    if (statvfs(NativePath::encode(folder).constData(), &info) != 0) {
        return {};
    }
    // A file system without inode counts (some report 0 files) is bounded by the exact count afterwards.
    return {qint64(info.f_bavail) * qint64(info.f_frsize), info.f_files > 0 ? qint64(info.f_favail) : -1};
}

QString megabytes(qint64 bytes)
{
    return QString::number((bytes + (1 << 20) - 1) >> 20);
}

} // namespace

UnpackBudget::UnpackBudget(const QString &folder, qint64 archiveBytes, const UnpackLimits &limits)
    : m_folder(folder), m_limits(limits), m_maxBytes(std::max(limits.minBytes, archiveBytes * limits.ratio)),
      m_maxEntries(std::max(limits.minEntries, archiveBytes / std::max<qint64>(1, limits.bytesPerEntry)))
{
    const Space space = freeSpace(folder);
    m_freeBytes = space.bytes;
    m_freeInodes = space.inodes;
}

QString UnpackBudget::checkFreeSpace() const
{
    const Space space = freeSpace(m_folder);
    if (space.bytes >= 0 && space.bytes < m_limits.reserveBytes) {
        return tr("less than %1 MB are free in %2").arg(megabytes(m_limits.reserveBytes), m_folder);
    }
    return {};
}

QString UnpackBudget::watch() const
{
    const Space space = freeSpace(m_folder);
    if (m_freeBytes >= 0 && space.bytes >= 0 && m_freeBytes - space.bytes > m_maxBytes) {
        return tooLarge();
    }
    if (m_freeInodes >= 0 && space.inodes >= 0 && m_freeInodes - space.inodes > m_maxEntries) {
        return tooManyEntries();
    }
    return checkFreeSpace();
}

QString UnpackBudget::checkFolder() const
{
    qint64 bytes = 0;
    qint64 entries = 0;
    std::error_code error;
    const fs::path root(NativePath::encode(m_folder).toStdString());
    for (auto it = fs::recursive_directory_iterator(root, error); !error && it != fs::recursive_directory_iterator();
         it.increment(error)) {
        if (++entries > m_maxEntries) {
            return tooManyEntries();
        }
        if (it->is_regular_file(error) && !it->is_symlink(error)) {
            bytes += qint64(it->file_size(error));
            if (bytes > m_maxBytes) {
                return tooLarge();
            }
        }
    }
    return {};
}

QStringList UnpackBudget::confine(const QString &tool, const QStringList &args) const
{
    QStringList command;
    // Root keeps none of its capabilities in the tool: no device node can be made, no owner or set-id bit given.
    if (geteuid() == 0) {
        command << WorkFolder::tool(QStringLiteral("setpriv")) << QStringLiteral("--bounding-set=-all")
                << QStringLiteral("--inh-caps=-all") << QStringLiteral("--");
    }
    command << WorkFolder::tool(QStringLiteral("prlimit")) << QStringLiteral("--fsize=%1").arg(m_maxBytes)
            << QStringLiteral("--") << tool << args;
    return command;
}

QString UnpackBudget::tooLarge() const
{
    return tr("the archive unpacks to more than %1 MB").arg(megabytes(m_maxBytes));
}

QString UnpackBudget::tooManyEntries() const
{
    return tr("the archive unpacks to more than %1 files").arg(m_maxEntries);
}
