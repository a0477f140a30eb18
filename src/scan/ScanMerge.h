#pragma once

// The rules that keep the stored records in step with the disk and with each new scan. Records are tied to
// scan entries by their exact localPath, never by bundle or catalogue identifier.

#include "scan/AppList.h"

namespace ScanMerge {

// A record whose file is gone becomes "-" (not installed) and stays; a record whose file lies in a trash
// folder is dropped, with a log line.
void doQuickSanityCheck(AppList &apps);

// Folds a fresh scan into the stored records. Stored records keep their order and everything they know; a record
// no longer scanned is dropped unless it is a purchase or a deal, which stays as "-"; a record scanned again only
// takes the scan's lastOpened (the first record with that path, when several share it); scan entries with no
// stored record are appended in scan order. Runs in time linear in the two lists.
void updateAppsUsingNewScan(AppList &apps, const AppList &newScan);

} // namespace ScanMerge
