#include "install/StagingLeftovers.h"

#include "install/UpdateLock.h"
#include "install/WorkFolder.h"
#include "model/VLApp.h"
#include "platform/FileLock.h"
#include "platform/FolderReader.h"
#include "platform/Log.h"
#include "platform/NativePath.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSet>

#include <cstdio>
#include <sys/stat.h>

namespace StagingLeftovers {

namespace {

constexpr qsizetype kNameBytes = 200;

bool lexists(const QString &path)
{
    struct stat info = {};
    return lstat(NativePath::encode(path).constData(), &info) == 0;
}

// The name (its first 200 bytes) of the item a staging name was made for; empty when name is none.
QByteArray stagedItemName(const QString &name)
{
    // "." NAME "." 16 hex digits "." ("new" | "old")
    static const QRegularExpression tail(QStringLiteral(R"(^\.[0-9a-f]{16}\.(new|old)$)"));
    constexpr qsizetype kTailBytes = 21;
    const QByteArray encoded = NativePath::encode(name);
    if (encoded.size() <= kTailBytes + 1 || !encoded.startsWith('.') ||
        !tail.match(QString::fromLatin1(encoded.right(kTailBytes))).hasMatch()) {
        return {};
    }
    return encoded.mid(1, encoded.size() - 1 - kTailBytes);
}

// The staged item names in each folder, each folder read once: thousands of apps share a few folders, and reading
// the folder again for each of them made the sweep quadratic.
class StagedNames
{
public:
    bool anyBeside(const QString &item)
    {
        const QFileInfo info(item);
        auto found = m_byFolder.constFind(info.path());
        if (found == m_byFolder.cend()) {
            QSet<QByteArray> names;
            FolderReader reader(NativePath::encode(info.path()));
            for (const FolderReader::Entry &entry : reader.entries()) {
                const QByteArray name = stagedItemName(NativePath::decode(entry.name));
                if (!name.isEmpty()) {
                    names.insert(name);
                }
            }
            found = m_byFolder.insert(info.path(), names);
        }
        return found->contains(NativePath::encode(info.fileName()).left(kNameBytes));
    }

private:
    QHash<QString, QSet<QByteArray>> m_byFolder;
};

} // namespace

bool isStagingName(const QString &name, const QString &itemName)
{
    // velmora-place keeps the first 200 bytes of the item's name.
    return !itemName.isEmpty() && stagedItemName(name) == NativePath::encode(itemName).left(kNameBytes);
}

int clearBeside(const QString &item)
{
    const QFileInfo info(item);
    const QString itemName = info.fileName();
    const QString folder = info.path();
    if (itemName.isEmpty() || !info.isAbsolute()) {
        return 0;
    }
    int cleared = 0;
    FolderReader reader(NativePath::encode(folder));
    for (const FolderReader::Entry &entry : reader.entries()) {
        const QString name = NativePath::decode(entry.name);
        if (!isStagingName(name, itemName)) {
            continue;
        }
        const QString leftover = folder + QLatin1Char('/') + name;
        const bool putBack =
            name.endsWith(QLatin1String(".old")) && !lexists(item) &&
            std::rename(NativePath::encode(leftover).constData(), NativePath::encode(item).constData()) == 0;
        if (putBack || WorkFolder::remove(leftover)) {
            vlLog(QStringLiteral("cleared a copy left by an interrupted update: %1").arg(leftover));
            ++cleared;
        }
    }
    return cleared;
}

int sweep(const QList<std::shared_ptr<VLApp>> &apps, const QStringList &folders)
{
    int cleared = 0;
    QSet<QString> recorded;
    StagedNames staged;
    for (const std::shared_ptr<VLApp> &app : apps) {
        if (!QDir::isAbsolutePath(app->localPath)) {
            continue;
        }
        const QString item = QDir::cleanPath(app->localPath);
        recorded.insert(item);
        // An update of the app running in another process has its staged copy beside the app: left alone. The folder
        // is read again under the lock before anything goes.
        const QString lockPath = UpdateLock::path(app->digestString);
        FileLock updating(lockPath);
        if (!lockPath.isEmpty() && staged.anyBeside(item) && updating.lock(0)) {
            cleared += clearBeside(item);
        }
    }
    // A leftover no record names may be the staged copy of an app being installed for the first time, whose record
    // the store does not hold yet.
    if (UpdateLock::anyHeld()) {
        return cleared;
    }
    for (const QString &folder : folders) {
        const QString clean = QDir::cleanPath(folder);
        FolderReader reader(NativePath::encode(clean));
        for (const FolderReader::Entry &entry : reader.entries()) {
            // A name cut at 200 bytes does not tell the item whose old copy would be put back.
            const QByteArray itemName = stagedItemName(NativePath::decode(entry.name));
            const QString item = clean + QLatin1Char('/') + NativePath::decode(itemName);
            if (!itemName.isEmpty() && itemName.size() < kNameBytes && !recorded.contains(item)) {
                cleared += clearBeside(item);
            }
        }
    }
    return cleared;
}

} // namespace StagingLeftovers
