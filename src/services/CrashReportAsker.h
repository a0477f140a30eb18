#pragma once

// How a front end asks its user about a crash report from an earlier run: it shows the report, lets the user add
// what they were doing, and answers. The desktop program asks in a dialog; velmora-cli leaves the question to its
// crash-reports command.

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

struct CrashReportQuestion
{
    QString message;         // the question's title
    QString informativeText; // what sending means, naming the company the report goes to
    QByteArray report;       // exactly what would be sent, besides the details
};

class CrashReportAsker
{
public:
    virtual ~CrashReportAsker() = default;
    // Calls answer once, on the thread that asked: the details text (possibly empty) when the user agrees to send,
    // nullopt when they refuse.
    virtual void askToSendCrashReport(const CrashReportQuestion &question,
                                      std::function<void(std::optional<QString> details)> answer) = 0;
};
