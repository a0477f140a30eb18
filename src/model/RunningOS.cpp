#include "model/RunningOS.h"

#include "model/PropertyList.h"
#include "model/VLMdItem.h"
#include "platform/VLSettings.h"

#include <QMutex>

namespace {

// Scans ask once per record; the file is read again only when it or its path changes.
struct CachedSystemVersion
{
    QMutex mutex;
    QString path;
    QDateTime modified;
    QString version;
};

QString productVersionAt(const QString &path)
{
    static CachedSystemVersion cache;
    const std::optional<QDateTime> modified = VLMdItem::modificationDate(path);
    if (!modified) {
        return {};
    }
    const QMutexLocker lock(&cache.mutex);
    if (cache.path != path || cache.modified != *modified) {
        const auto dict = PropertyList::readDictionaryFile(path).dictionary;
        cache.path = path;
        cache.modified = *modified;
        cache.version = dict ? dict->value(QStringLiteral("ProductVersion")).toString() : QString();
    }
    return cache.version;
}

} // namespace

QString runningOSVersion()
{
    const VLSettings settings;
    const QString fromVolume =
        productVersionAt(settings.volumeRoot() + QStringLiteral("System/Library/CoreServices/SystemVersion.plist"));
    if (!fromVolume.isEmpty()) {
        return fromVolume;
    }
    const QString configured = settings.stringValue(SettingKey::osVersion);
    return configured.isEmpty() ? QString() : configured;
}
