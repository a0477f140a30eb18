#pragma once

// The desktop's answer to a crash report of an earlier run: a dialog that shows exactly what would be sent, takes
// what the user was doing, and sends only when the user says so. Lives on the UI thread.

#include "services/CrashReportAsker.h"

class CrashReportDialog : public CrashReportAsker
{
public:
    void askToSendCrashReport(const CrashReportQuestion &question,
                              std::function<void(std::optional<QString> details)> answer) override;
};
