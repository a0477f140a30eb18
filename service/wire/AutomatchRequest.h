#pragma once

// The matching request: head fields, then app[i][t|p|d|v|b|m] groups whose indices may have gaps.

#include "catalogue/CatalogueIndex.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

// One app group. Its texts point into the request's body, or into the request's own copy of what was URL-encoded:
// the body must outlive the request.
struct AutomatchApp
{
    int index = 0;
    AppDescription description;      // decoded
    QByteArrayView digest;           // "p", sent as is
    QByteArrayView installedVersion; // "v", sent as is (not URL-encoded)
    unsigned fieldsSent = 0;         // a bit for each of b, t, d, p and v, for joining an index sent twice
};

struct AutomatchRequest
{
    QString clientVersion;          // "vld"
    QString serial;                 // "c"
    QString installation;           // "uuid"
    QString memberId;               // "mid"
    QString type;                   // "type"
    std::vector<AutomatchApp> apps; // by index, in order; an index sent twice is one app

    // Nullopt with a reason when the body is not a well-formed request.
    static std::optional<AutomatchRequest> parse(QByteArrayView body, QString *error);

private:
    QByteArray m_decoded; // the values that had escapes, decoded; reserved once so that views into it stay put
};
