#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>

class VLApp;

// A record as --json output shows it: every field by its own name (dates as ISO 8601 UTC), including the
// ones the store does not keep (kind, requiresNewerOSVersion, ...), so scripts can filter as they like.
QJsonObject appToJson(const VLApp &app);
QJsonArray appsToJson(const QList<VLApp> &apps);
