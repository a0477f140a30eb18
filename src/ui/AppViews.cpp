#include "ui/AppViews.h"

#include "model/AppJson.h"
#include "model/RecordText.h"

#include <QCollator>

#include <algorithm>

namespace AppViews {

namespace {

bool isMatched(const VLApp &app)
{
    return !app.vlID.isEmpty() && app.vlID != RecordText::unknown;
}

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

bool isInView(AppView view, const VLApp &app, const AppViewOptions &options)
{
    switch (view) {
    case AppView::Updates:
        return isListedAsOutdated(app, options.outdated);
    case AppView::Installed:
        return app.isInstalled() && (options.showNoMatch || isMatched(app));
    case AppView::WatchList:
        return !app.listname.isEmpty();
    case AppView::Purchases:
        return !app.orderid.isEmpty();
    case AppView::Deals:
        return !app.deal_id.isEmpty();
    }
    return false;
}

bool matchesSearch(const VLApp &app, const QString &search)
{
    const QString words = search.trimmed();
    if (words.isEmpty()) {
        return true;
    }
    for (const QString *field : {&app.displayName, &app.name, &app.developer, &app.bundleID}) {
        if (field->contains(words, Qt::CaseInsensitive)) {
            return true;
        }
    }
    return false;
}

AppList sortedByListSort(const AppList &apps, const QString &key)
{
    const bool descending = key == QLatin1String("sortDate");
    // Each text is turned into its collation key once: thousands of records are sorted at every change of the list.
    const QCollator collator;
    QList<std::pair<QCollatorSortKey, AppRef>> keyed;
    keyed.reserve(apps.size());
    for (const AppRef &app : apps) {
        keyed.append({collator.sortKey(sortField(*app, key)), app});
    }
    std::stable_sort(keyed.begin(), keyed.end(), [descending](const auto &a, const auto &b) {
        const int order = a.first.compare(b.first);
        return descending ? order > 0 : order < 0;
    });
    AppList sorted;
    sorted.reserve(keyed.size());
    for (const auto &entry : std::as_const(keyed)) {
        sorted.append(entry.second);
    }
    return sorted;
}

AppList appsInView(AppView view, const AppList &apps, const AppViewOptions &options)
{
    AppList shown;
    for (const AppRef &app : apps) {
        if (isInView(view, *app, options) && matchesSearch(*app, options.search)) {
            shown.append(app);
        }
    }
    return sortedByListSort(shown, options.listSort);
}

} // namespace AppViews
