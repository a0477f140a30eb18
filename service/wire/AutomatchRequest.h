#pragma once

// The matching request: head fields, then app[i][t|p|d|v|b|m] groups whose indices may have gaps.

#include "catalogue/CatalogueIndex.h"

#include <map>

#include <optional>

struct AutomatchApp
{
    AppDescription description;
    QString digest;           // "p", sent as is
    QString installedVersion; // "v", sent as is (not URL-encoded)
};

struct AutomatchRequest
{
    QString clientVersion;            // "vld"
    QString serial;                   // "c"
    QString installation;             // "uuid"
    QString memberId;                 // "mid"
    QString type;                     // "type"
    std::map<int, AutomatchApp> apps; // by index, in order

    // Nullopt with a reason when the body is not a well-formed request.
    static std::optional<AutomatchRequest> parse(const QByteArray &body, QString *error);
};
