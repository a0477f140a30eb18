#include "scan/ScanStoreFile.h"

#include "platform/AppPaths.h"
#include "platform/AtomicFile.h"
#include "platform/FileBytes.h"
#include "platform/Log.h"
#include "platform/ParallelMap.h"
#include "scan/ScanStoreFileRecords.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <atomic>
#include <cstdio>

namespace {
const QString kAppsKey = QStringLiteral("apps");

// The records of a file in this program's own layout, each object parsed just before its record is made, on all
// cores; nullopt when the layout is another or an object does not parse, for the whole text to be parsed instead.
std::optional<AppList> restoreBySplitting(const QByteArray &text,
                                          const std::function<AppRef(const QJsonObject &)> &restore)
{
    const std::optional<std::vector<QByteArrayView>> objects = ScanStoreFileRecords::split(text);
    if (!objects) {
        return std::nullopt;
    }
    std::atomic<bool> unparsed{false};
    const std::vector<AppRef> records = parallelMap<AppRef>(
        qsizetype(objects->size()),
        [&](qsizetype i) {
            const QByteArrayView object = (*objects)[size_t(i)];
            QJsonParseError error;
            const QJsonDocument document =
                QJsonDocument::fromJson(QByteArray::fromRawData(object.data(), object.size()), &error);
            if (error.error != QJsonParseError::NoError) {
                unparsed = true;
                return AppRef();
            }
            return restore(document.object());
        },
        &unparsed);
    if (unparsed) {
        return std::nullopt;
    }
    return AppList(records.begin(), records.end());
}

} // namespace

ScanStoreFile::ScanStoreFile(const QString &path) : m_path(path), m_lock(path + QStringLiteral(".lock")) {}

QString ScanStoreFile::defaultPath()
{
    return AppPaths::dataFolder() + QStringLiteral("/vldscan.vld6");
}

ScanStoreFile::Contents ScanStoreFile::read(const std::function<AppRef(const QJsonObject &)> &restore)
{
    Contents contents;
    // Refused without reading when it is a pipe, a device or too large; otherwise the bytes, and the stamp of the
    // very file they came from: another process may replace the name at any moment.
    const FileBytes::Result file = FileBytes::read(m_path, kLargestStore);
    if (!file.bytes && file.failure == FileBytes::Failure::Missing) {
        return contents;
    }
    contents.stamp = file.stamp.exists ? file.stamp : stamp();
    contents.modified = contents.stamp.modified();
    if (!file.bytes) {
        const QString reason = file.failure == FileBytes::Failure::TooLarge       ? QStringLiteral("larger than 1 GB")
                               : contents.stamp.exists && !contents.stamp.regular ? QStringLiteral("not a plain file")
                                                                                  : file.reason;
        contents.status = Status::Damaged;
        contents.damage = keepAside(contents.stamp, reason, std::nullopt, true);
        return contents;
    }
    if (std::optional<AppList> records = restoreBySplitting(*file.bytes, restore)) {
        contents.status = Status::Loaded;
        contents.apps = std::move(*records);
        return contents;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(*file.bytes, &error);
    const QJsonValue apps = document.object().value(kAppsKey);
    if (!document.isObject() || !apps.isArray()) {
        const QString reason =
            error.error != QJsonParseError::NoError ? error.errorString() : QStringLiteral("no list of records");
        contents.status = Status::Damaged;
        contents.damage = keepAside(contents.stamp, reason, file.bytes, true);
        return contents;
    }
    contents.status = Status::Loaded;
    // Taken out of the array first, which is then not shared between threads.
    std::vector<QJsonObject> archives;
    bool strayEntries = false;
    for (const QJsonValue &entry : apps.toArray()) {
        if (entry.isObject()) {
            archives.push_back(entry.toObject());
        } else {
            strayEntries = true;
        }
    }
    const std::vector<AppRef> records = parallelMap<AppRef>(
        qsizetype(archives.size()), [&archives, &restore](qsizetype i) { return restore(archives[size_t(i)]); });
    contents.apps = AppList(records.begin(), records.end());
    if (strayEntries) {
        contents.damage = keepAside(contents.stamp, QStringLiteral("entries that are no records"), file.bytes, false);
    }
    return contents;
}

std::optional<FileStamp> ScanStoreFile::write(qsizetype count,
                                              const std::function<void(qsizetype, QByteArray &)> &appendRecord)
{
    // The whole data folder may have been deleted since (a forced reset); the records in memory still count.
    QDir().mkpath(QFileInfo(m_path).path());
    const bool locked = lock(-1);
    if (locked) {
        removeLeftoverSaves();
    }
    // Written as text in pieces of a few hundred records: the whole text of a large store, held at once, was the
    // largest allocation of a check.
    constexpr qsizetype kPieceBytes = 256 * 1024;
    qsizetype next = 0;
    const AtomicFile::Result result = AtomicFile::write(m_path, [&](QByteArray &piece) {
        if (next == 0) {
            piece += "{\"apps\":[";
        }
        for (; next < count && piece.size() < kPieceBytes; ++next) {
            if (next > 0) {
                piece += ',';
            }
            appendRecord(next, piece);
        }
        if (next < count) {
            return true;
        }
        piece += "]}";
        return false;
    });
    // Taken before the lock goes, so that it is the stamp of this write and not of a later one.
    const FileStamp written = stamp();
    if (locked) {
        unlock();
    }
    if (!result.ok) {
        vlLog(QStringLiteral("Save DB error %1").arg(result.reason));
        return std::nullopt;
    }
    return written;
}

void ScanStoreFile::removeLeftoverSaves()
{
    // A save killed after creating its temporary file and before renaming it leaves that file behind. Only the lock
    // holder saves, so while the lock is held every such file is a leftover.
    const QFileInfo prefix(AtomicFile::temporaryPrefix(m_path));
    QDir folder = prefix.dir();
    const QStringList names =
        folder.entryList({prefix.fileName() + QLatin1Char('*')}, QDir::Files | QDir::Hidden | QDir::System);
    for (const QString &name : names) {
        folder.remove(name);
    }
}

ScanStoreFile::Damage ScanStoreFile::keepAside(const FileStamp &seen, const QString &reason,
                                               const std::optional<QByteArray> &bytes, bool move)
{
    Damage damage{reason, {}};
    const QString aside = damagedPath();
    // Moving needs the lock, and the very file that was read: another process may have saved a good one since. A
    // rename moves a pipe or device as it is, without opening it.
    if (move && lock(1000)) {
        if (stamp() == seen) {
            QFile::remove(aside);
            if (std::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(aside).constData()) == 0) {
                damage.keptAs = aside;
            }
        }
        unlock();
    }
    // Otherwise the bytes that were read are kept, not whatever the name holds by now.
    if (damage.keptAs.isEmpty() && bytes && AtomicFile::write(aside, *bytes).ok) {
        damage.keptAs = aside;
    }
    vlLog(QStringLiteral("Scan store %1 damaged (%2); kept as %3")
              .arg(m_path, reason, damage.keptAs.isEmpty() ? QStringLiteral("-") : damage.keptAs));
    return damage;
}
