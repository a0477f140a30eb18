#pragma once

// Which updates are new since the user was last told, and what the notification about them says.

#include "scan/AppList.h"

#include <QDate>
#include <QString>

#include <optional>

namespace UpdateNotices {

// A catalogue date as the catalogue sends it ("Nov 22, 2026", or ISO "2026-11-22"); absent for anything else.
std::optional<QDate> catalogueDate(const QString &vlDate);

// Without a "lastNotified" setting, every outdated record counts; otherwise those whose catalogue date lies after
// it, each logged.
int countNumberOfUpdatesFoundSinceLastScan(const AppList &outdated);

// Writes the current moment to "lastNotified", after a notification was posted.
void rememberNotified();

struct Notice
{
    QString title;
    QString text;
    QString button;
};

// The background check's notification: "1 new update is available" / "Update your app now", or the plural.
Notice backgroundNotice(int count);

} // namespace UpdateNotices
