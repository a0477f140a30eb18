#pragma once

// The member's lists merged into the scan store: the watch list and the purchases from the service become fields
// of the records with the same catalogue id, or new records for apps not installed; at log-out every member field
// is taken off again. Each call is one change of the store (its file lock and its mutex held throughout) and saves
// it.

#include "scan/AppList.h"

#include <QVariantList>

class VLScanData;

namespace VLMemberLists {

// An app already on a list keeps its list fields (only its icon is loaded again); others take the item's.
void mergeWatchListItems(VLScanData &store, const QVariantList &items);
// An app already bought keeps its order (only its icon is loaded again); others take the item's. Returns the
// store's list sorted by order date, newest first, as the purchases view shows it.
AppList mergePurchaseItems(VLScanData &store, const QVariantList &items);
AppList sortedByOrderDate(AppList apps);
void removePurchasesAndWatchListApps(VLScanData &store);

} // namespace VLMemberLists
