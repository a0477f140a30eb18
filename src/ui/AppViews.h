#pragma once

// What each of the window's views lists, found by the search text and sorted by the list's sort key ("listSort").
// Pure: the window refilters whenever the records, a display setting or the search change.

#include "scan/AppList.h"
#include "scan/OutdatedFilter.h"

#include <QString>

enum class AppView { Updates, Installed, WatchList, Purchases, Deals };

struct AppViewOptions
{
    OutdatedFilterOptions outdated;
    bool showNoMatch = false;
    QString search;
    QString listSort = QStringLiteral("sortDate");
};

namespace AppViews {

bool isInView(AppView view, const VLApp &app, const AppViewOptions &options);
bool matchesSearch(const VLApp &app, const QString &search);
// The records of view among apps (the store's records; the deals for Deals), searched and sorted.
AppList appsInView(AppView view, const AppList &apps, const AppViewOptions &options);

} // namespace AppViews
