#pragma once

// The record's own calls to the service and the site: app information, watch-list changes and catalogue icons.
// Each waits for its reply on the calling thread, so they belong on worker threads. They return whether the
// service answered with success and change nothing otherwise.

class VLApp;

namespace VLAppOnServer {
// Fetches the app-info reply for the record's vlID and applies it.
bool updateWithServerInfo(VLApp &app);
bool saveToWatchListOnServer(const VLApp &app);
bool removeFromWatchListOnServer(const VLApp &app);
// Loads appIcon: the bundle's icon for an installed record, else the cached catalogue icon, fetched into the
// cache first when it is not there yet; "" (the generic icon) when nothing yields one.
void getIcon(VLApp &app);
} // namespace VLAppOnServer
