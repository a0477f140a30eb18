#include "model/VLMdItem.h"

#include "model/BundleReader.h"
#include "model/PathNames.h"

#include <QFile>

#include <sys/stat.h>

namespace {

std::optional<QDateTime> statTime(const struct timespec &ts)
{
    return QDateTime::fromMSecsSinceEpoch(qint64(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000, Qt::UTC);
}

// The last use of a bundle is the last read of its main executable, when that came after the executable last changed.
std::optional<QDateTime> executableLastUse(BundleReader &bundle)
{
    const std::optional<QVariantMap> &dictionary = bundle.bundleInfoDict();
    const QString executable =
        dictionary ? dictionary->value(QStringLiteral("CFBundleExecutable")).toString() : QString();
    if (executable.isEmpty() || executable.contains(QLatin1Char('/'))) {
        return std::nullopt;
    }
    struct stat info = {};
    const QByteArray path = QFile::encodeName(bundle.path() + QStringLiteral("/Contents/MacOS/") + executable);
    if (stat(path.constData(), &info) != 0) {
        return std::nullopt;
    }
    const bool readAfterChange =
        info.st_atim.tv_sec > info.st_mtim.tv_sec ||
        (info.st_atim.tv_sec == info.st_mtim.tv_sec && info.st_atim.tv_nsec > info.st_mtim.tv_nsec);
    return readAfterChange ? statTime(info.st_atim) : std::nullopt;
}

} // namespace

std::optional<QDateTime> VLMdItem::modificationDate(const QString &path)
{
    struct stat info = {};
    if (stat(QFile::encodeName(path).constData(), &info) != 0) {
        return std::nullopt;
    }
    return statTime(info.st_mtim);
}

VLMdItem VLMdItem::fromPath(const QString &path)
{
    BundleReader bundle(path);
    return fromBundle(bundle);
}

VLMdItem VLMdItem::fromBundle(BundleReader &bundle)
{
    const QString path = bundle.path();
    VLMdItem item;
    item.path = path;
    QString fsName = path;
    while (fsName.size() > 1 && fsName.endsWith(QLatin1Char('/'))) {
        fsName.chop(1);
    }
    fsName = fsName.mid(fsName.lastIndexOf(QLatin1Char('/')) + 1);
    item.fsName = fsName;
    item.displayName = stringByDeletingPathExtension(fsName);
    item.kind = pathExtension(fsName);
    // A bundle reported through a link changes when its target does.
    struct stat info = {};
    if (stat(QFile::encodeName(path).constData(), &info) == 0) {
        item.contentModificationDate = statTime(info.st_mtim);
        item.size = qint64(info.st_size);
    }
    item.lastUsedDate = executableLastUse(bundle);
    return item;
}
