#pragma once

// Property lists the scan could not read are uploaded so the catalogue can learn to read them: only while the user
// lets usage data be sent ("sendAnalytics"), each file's bytes once (the digests of what the service took are kept in
// the data folder, so later checks and runs skip them), and as the bytes they are.

#include <QObject>
#include <QStringList>

namespace BadPlistReports {

// The file in the data folder that remembers what was sent: one SHA-256 in hex a line.
QString sentListPath();

// Uploads the files not sent before. memberID 0: nobody signed in. The uploads run on the calling thread, owned by
// parent until they end.
void send(const QStringList &paths, int memberID, QObject *parent);

} // namespace BadPlistReports
