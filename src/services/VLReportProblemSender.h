#pragma once

// A member's problem report about one app, posted to the service. The reply is not read.

#include "services/VLFormSender.h"

class VLApp;

class VLReportProblemSender : public VLFormSender
{
    Q_OBJECT

public:
    explicit VLReportProblemSender(QObject *parent = nullptr);
    // memberID 0 (nobody signed in) is sent as -1.
    void reportIssue(const QString &issue, const VLApp &app, int memberID);
    // The form body. Only the name is URL-encoded: the collector reads the other fields raw, and always has.
    static QString reportBody(const QString &issue, const VLApp &app, int memberID);
};
