#include "model/ListSort.h"

#include "model/AppJson.h"

#include <QCollator>

#include <algorithm>

namespace {

// The fields the preferences offer are read as they are; any other key through the record's JSON form, which
// converts the whole record.
QString sortField(const VLApp &app, const QString &key)
{
    if (key == QLatin1String("sortDate")) {
        return app.sortDate;
    }
    if (key == QLatin1String("displayName")) {
        return app.displayName;
    }
    if (key == QLatin1String("developer")) {
        return app.developer;
    }
    return appToJson(app).value(key).toVariant().toString();
}

} // namespace

QList<std::shared_ptr<VLApp>> sortedByListSort(const QList<std::shared_ptr<VLApp>> &apps, const QString &key)
{
    const bool descending = key == QLatin1String("sortDate");
    // Each text is turned into its collation key once: thousands of records are sorted at every change of the list.
    const QCollator collator;
    QList<std::pair<QCollatorSortKey, std::shared_ptr<VLApp>>> keyed;
    keyed.reserve(apps.size());
    for (const auto &app : apps) {
        keyed.append({collator.sortKey(sortField(*app, key)), app});
    }
    std::stable_sort(keyed.begin(), keyed.end(), [descending](const auto &a, const auto &b) {
        const int order = a.first.compare(b.first);
        return descending ? order > 0 : order < 0;
    });
    QList<std::shared_ptr<VLApp>> sorted;
    sorted.reserve(keyed.size());
    for (const auto &entry : std::as_const(keyed)) {
        sorted.append(entry.second);
    }
    return sorted;
}
