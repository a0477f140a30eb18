#pragma once

// Dates as the program writes them in texts it keeps or sends ("lastmatched", "lastNotified", the lastOpened of
// the matching request): "2013-05-04 12:00:00 +0000", always UTC.

#include <QDateTime>
#include <QString>

#include <optional>

QString dateDescription(const QDateTime &date);
// The current moment's description.
QString currentDateDescription();
// Reads a description back; absent for text of another form.
std::optional<QDateTime> dateFromDescription(const QString &text);
