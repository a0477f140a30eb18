#include "ui/AppViews.h"

#include "model/ListSort.h"
#include "model/RecordText.h"

namespace AppViews {

namespace {

bool isMatched(const VLApp &app)
{
    return !app.vlID.isEmpty() && app.vlID != RecordText::unknown;
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
