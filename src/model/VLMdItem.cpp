#include "model/VLMdItem.h"

#include "model/BundleReader.h"
#include "model/PathNames.h"
#include "platform/FileStatus.h"

namespace {

QDateTime dateOf(qint64 nsecs)
{
    return QDateTime::fromMSecsSinceEpoch(nsecs / 1000000, Qt::UTC);
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
    const FileStatus status = FileStatus::of(bundle.path() + QStringLiteral("/Contents/MacOS/") + executable);
    if (!status.reached() || status.accessedNsecs <= status.modifiedNsecs) {
        return std::nullopt;
    }
    return dateOf(status.accessedNsecs);
}

} // namespace

std::optional<QDateTime> VLMdItem::modificationDate(const QString &path)
{
    const FileStatus status = FileStatus::of(path);
    return status.reached() ? std::optional<QDateTime>(dateOf(status.modifiedNsecs)) : std::nullopt;
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
    const FileStatus status = FileStatus::of(path);
    if (status.reached()) {
        item.contentModificationDate = dateOf(status.modifiedNsecs);
        item.size = status.size;
    }
    item.lastUsedDate = executableLastUse(bundle);
    return item;
}
