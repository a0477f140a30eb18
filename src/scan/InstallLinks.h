#pragma once

// Install links opened by other programs: "velmora://bundle/ID" names a bundle of apps kept by the service,
// "velmora://app/VLID/NAME/VERSION" one app. Each linked app is looked up in the stored scan, or else asked of
// the service, and gets a decision.

#include "scan/AppList.h"

#include <QList>
#include <QString>
#include <QStringList>

class VLScanData;

namespace InstallLinks {

enum class Decision { Update, Install, CannotInstall, UpToDate };

struct LinkedApp
{
    AppRef app;
    Decision decision = Decision::UpToDate;
};

// The catalogue ids a link names; the bundle's are fetched from the service host ("/bundle/" + id). Empty for a
// link of another form or a failed fetch. Blocks: call on a worker thread.
QStringList linkedIds(const QString &link);

// What the link asks for one app, logged as the desktop program logs it. stored is the scan's record (null when
// the app is not in it); catalogue holds what the service knows of it; linkedVersion is the version an app link
// offers ("" for a bundle link): an installed copy older than it is updated, whatever the catalogue says.
Decision decide(const VLApp *stored, const VLApp &catalogue, const QString &linkedVersion = QString());

// The whole link against the stored scan: ids, records (from the store or the service) and decisions. Blocks.
QList<LinkedApp> installFromLink(const QString &link, const VLScanData &store);

} // namespace InstallLinks

Q_DECLARE_METATYPE(QList<InstallLinks::LinkedApp>)
