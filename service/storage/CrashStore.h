#pragma once

// The crash reports the program sent, kept as they arrived for the people who fix the program.

#include <QByteArray>
#include <QList>
#include <QString>

struct CrashReport
{
    qint64 id = 0;
    QString receivedAt;
    QString version;
    QString installation; // the program's installation id ("penguin")
    QString details;      // what the user said they were doing
    QByteArray report;    // byte for byte as sent
};

class CrashStore
{
public:
    virtual ~CrashStore() = default;
    virtual bool addCrash(const CrashReport &crash) = 0;
    // Oldest first.
    virtual QList<CrashReport> crashes() = 0;
};
