#pragma once

// The copies velmora-place stages beside an app while it replaces it (".NAME.<16 hex digits>.new", and ".old" for the
// old copy on file systems that cannot swap) stay behind when a run is killed. Before the app is updated again they
// are cleared: a staged new copy is removed; an old copy put aside is removed when the app stands, and put back in
// the app's place when a kill came between the two renames and left none. At every start the program sweeps them
// beside every app it knows.

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class VLApp;

namespace StagingLeftovers {

// Whether name is one of velmora-place's staging names for the item called itemName.
bool isStagingName(const QString &name, const QString &itemName);
// Clears the leftovers beside item (an absolute path); answers how many were cleared.
int clearBeside(const QString &item);
// Clears the leftovers beside each record's app whose update runs nowhere (the record's update lock is held while
// they go), then those in folders of items no record names, unless an update runs anywhere; answers how many.
int sweep(const QList<std::shared_ptr<VLApp>> &apps, const QStringList &folders);

} // namespace StagingLeftovers
