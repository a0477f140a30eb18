#include "scan/VLMemberLists.h"

#include "platform/Log.h"
#include "scan/VLScanData.h"
#include "services/VLAppOnServer.h"

#include <algorithm>

namespace {

using Update = void (VLApp::*)(const QVariantMap &);
using Create = VLApp (*)(const QVariantMap &);

// Applies each item to the records of its catalogue id, or appends a new record when there is none.
void merge(VLScanData &store, const QVariantList &items, QString VLApp::*marker, Update update, Create create)
{
    VLScanData::Change change(store);
    const QMutexLocker lock(&store.mutex());
    AppList apps = store.apps().value_or(AppList());
    for (const QVariant &entry : items) {
        const QVariantMap item = entry.toMap();
        const QString vlID = item.value(QStringLiteral("vl_id")).toString();
        bool found = false;
        for (const AppRef &app : std::as_const(apps)) {
            if (app->vlID != vlID) {
                continue;
            }
            found = true;
            if (!((*app).*marker).isEmpty()) {
                VLAppOnServer::getIcon(*app);
            } else {
                ((*app).*update)(item);
            }
        }
        if (!found) {
            apps.append(std::make_shared<VLApp>(create(item)));
        }
    }
    store.setApps(apps);
    if (!store.saveDataToDisk()) {
        vlLog(QStringLiteral("Save DB error %1").arg(store.filePath()));
    }
}

} // namespace

namespace VLMemberLists {

void mergeWatchListItems(VLScanData &store, const QVariantList &items)
{
    merge(store, items, &VLApp::listname, &VLApp::updateWithWatchListsItem, &VLApp::initWithWatchListItem);
}

AppList mergePurchaseItems(VLScanData &store, const QVariantList &items)
{
    merge(store, items, &VLApp::orderid, &VLApp::updateWithPromoPurchaseItem, &VLApp::initWithPurchaseItem);
    return sortedByOrderDate(store.apps().value_or(AppList()));
}

AppList sortedByOrderDate(AppList apps)
{
    std::stable_sort(apps.begin(), apps.end(), [](const AppRef &a, const AppRef &b) {
        return QString::compare(a->orderDate, b->orderDate, Qt::CaseInsensitive) > 0;
    });
    return apps;
}

void removePurchasesAndWatchListApps(VLScanData &store)
{
    VLScanData::Change change(store);
    const QMutexLocker lock(&store.mutex());
    const std::optional<AppList> apps = store.apps();
    if (!apps || apps->isEmpty()) {
        return;
    }
    for (const AppRef &app : *apps) {
        if (app->orderid.isNull() && app->listname.isEmpty()) {
            continue;
        }
        app->orderid.clear();
        app->serialNumber.clear();
        app->orderDate.clear();
        app->purchasedVersion.clear();
        app->listname.clear();
        app->wlID.clear();
    }
    if (!store.saveDataToDisk()) {
        vlLog(QStringLiteral("Save DB error %1").arg(store.filePath()));
    }
}

} // namespace VLMemberLists
