#pragma once

// What one update's download may cost: its size is bounded by the catalogue's word (with a margin for a size
// rounded or a little stale), else by the user's setting "downloadLimitMB"; a transfer that stops moving, or moves
// too slowly for minutes, fails and is continued from where it stopped.

#include <QString>

struct DownloadRequest;

namespace DownloadBounds {

// The most bytes a download may bring; catalogueKilobytes is the record's fileSize ("" or "-" when not known).
qint64 maxBytes(const QString &catalogueKilobytes);
// Sets the request's size bound, idle time-out and least rate.
void apply(DownloadRequest &request, const QString &catalogueKilobytes);

} // namespace DownloadBounds
