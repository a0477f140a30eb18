#include "scan/ScanStoreFile.h"

#include "platform/AppPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <QDeadlineTimer>
#include <QThread>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
const QString kAppsKey = QStringLiteral("apps");
}

ScanStoreFile::ScanStoreFile(const QString &path) : m_path(path) {}

ScanStoreFile::~ScanStoreFile()
{
    if (m_lockFd >= 0) {
        close(m_lockFd);
    }
}

QString ScanStoreFile::defaultPath()
{
    return AppPaths::dataFolder() + QStringLiteral("/vldscan.vld6");
}

namespace {

ScanStoreFile::Stamp stampOf(const struct stat &info)
{
    return {true, info.st_dev, info.st_ino, qint64(info.st_size),
            qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec};
}

} // namespace

ScanStoreFile::Stamp ScanStoreFile::stamp() const
{
    struct stat info = {};
    return stat(QFile::encodeName(m_path).constData(), &info) == 0 ? stampOf(info) : Stamp{};
}

ScanStoreFile::Contents ScanStoreFile::read()
{
    Contents contents;
    QFile file(m_path);
    const bool opened = file.open(QIODevice::ReadOnly);
    // The stamp of the very file whose bytes are read: another process may replace the name at any moment.
    struct stat info = {};
    if (opened && fstat(file.handle(), &info) == 0) {
        contents.stamp = stampOf(info);
    } else {
        contents.stamp = stamp();
    }
    if (!contents.stamp.exists) {
        return contents;
    }
    contents.modified = QDateTime::fromMSecsSinceEpoch(contents.stamp.modifiedNs / 1000000, Qt::UTC);
    if (!opened) {
        contents.status = Status::Damaged;
        keepAside(contents.stamp, std::nullopt, true);
        return contents;
    }
    const QByteArray bytes = file.readAll();
    file.close();
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    const QJsonValue apps = document.object().value(kAppsKey);
    if (!document.isObject() || !apps.isArray()) {
        contents.status = Status::Damaged;
        keepAside(contents.stamp, bytes, true);
        return contents;
    }
    contents.status = Status::Loaded;
    bool strayEntries = false;
    for (const QJsonValue &entry : apps.toArray()) {
        if (entry.isObject()) {
            contents.apps.append(entry);
        } else {
            strayEntries = true;
        }
    }
    if (strayEntries) {
        keepAside(contents.stamp, bytes, false);
    }
    return contents;
}

std::optional<ScanStoreFile::Stamp> ScanStoreFile::write(const QJsonArray &apps)
{
    // The whole data folder may have been deleted since (a forced reset); the records in memory still count.
    QDir().mkpath(QFileInfo(m_path).path());
    const bool locked = lock(-1);
    if (locked) {
        removeLeftoverSaves();
    }
    QSaveFile file(m_path);
    bool ok = file.open(QIODevice::WriteOnly);
    if (ok) {
        file.write(QJsonDocument(QJsonObject{{kAppsKey, apps}}).toJson(QJsonDocument::Compact));
        ok = file.commit();
    }
    // Taken before the lock goes, so that it is the stamp of this write and not of a later one.
    const Stamp written = stamp();
    if (locked) {
        unlock();
    }
    return ok ? std::optional<Stamp>(written) : std::nullopt;
}

void ScanStoreFile::removeLeftoverSaves()
{
    // A save killed after naming its temporary file ("vldscan.vld6.XXXXXX", six random letters and digits) and
    // before renaming it leaves that file behind. Only the lock holder saves, so while the lock is held every such
    // file is a leftover. A suffix in lower-case letters only may be a word ("backup"): that file stays.
    const QFileInfo store(m_path);
    QDir folder = store.dir();
    const QStringList names =
        folder.entryList({store.fileName() + QStringLiteral(".??????")}, QDir::Files | QDir::Hidden);
    for (const QString &name : names) {
        const QStringView suffix = QStringView(name).right(6);
        const bool random = std::all_of(suffix.begin(), suffix.end(),
                                        [](QChar c) { return c.unicode() < 128 && c.isLetterOrNumber(); }) &&
                            !std::all_of(suffix.begin(), suffix.end(), [](QChar c) { return c.isLower(); });
        if (random) {
            folder.remove(name);
        }
    }
}

void ScanStoreFile::keepAside(const Stamp &seen, const std::optional<QByteArray> &bytes, bool move)
{
    const QString aside = damagedPath();
    // Moving needs the lock, and the very file that was read: another process may have saved a good one since.
    if (move && lock(1000)) {
        const bool same = stamp() == seen;
        if (same) {
            QFile::remove(aside);
            QFile::rename(m_path, aside);
        }
        unlock();
        if (same) {
            return;
        }
    }
    // Otherwise the bytes that were read are kept, not whatever the name holds by now.
    QSaveFile copy(aside);
    if (bytes && copy.open(QIODevice::WriteOnly)) {
        copy.write(*bytes);
        copy.commit();
    }
}

bool ScanStoreFile::lock(int timeoutMs)
{
    if (m_lockDepth > 0) {
        ++m_lockDepth;
        return true;
    }
    // The file itself stays: removing it would let two processes lock two different files of the same name.
    const int fd =
        open(QFile::encodeName(m_path + QStringLiteral(".lock")).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) {
        return false;
    }
    QDeadlineTimer deadline(timeoutMs < 0 ? QDeadlineTimer::Forever : QDeadlineTimer(timeoutMs));
    for (;;) {
        const int operation = deadline.isForever() ? LOCK_EX : LOCK_EX | LOCK_NB;
        if (flock(fd, operation) == 0) {
            break;
        }
        if ((errno != EWOULDBLOCK && errno != EINTR) || deadline.hasExpired()) {
            close(fd);
            return false;
        }
        if (errno == EWOULDBLOCK) {
            QThread::msleep(std::min<qint64>(20, std::max<qint64>(1, deadline.remainingTime())));
        }
    }
    m_lockFd = fd;
    m_lockDepth = 1;
    return true;
}

void ScanStoreFile::unlock()
{
    if (m_lockDepth > 0 && --m_lockDepth == 0) {
        // Closing the only descriptor releases the lock.
        close(m_lockFd);
        m_lockFd = -1;
    }
}
