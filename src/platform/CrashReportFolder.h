#pragma once

// The crash reports kept in the data folder ("Crash Reports", mode 0700, each file 0600): a few at most, the oldest
// go first. A report not sent yet ends in ".crash"; a sent one in ".sent". An empty ".crash" file belongs to a
// running process that has not crashed, and is no report.

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

struct CrashReportFile
{
    QString path;
    QDateTime written; // when the crash was written (the file's modification time)
    bool sent = false;
};

namespace CrashReportFolder {
inline constexpr int kKeptReports = 5;

// The folder, created with mode 0700 when missing; "" when it cannot be had.
QString folder();
// A new report file's name for program, in the folder; pruned first so that a crash keeps at most kKeptReports.
QString newReportPath(const QString &program);
// Removes the oldest reports beyond keep, and empty files left by processes that have ended.
void prune(int keep);
// Every report, newest first.
QList<CrashReportFile> reports();
QByteArray read(const CrashReportFile &report);
bool markSent(const CrashReportFile &report);
bool discard(const CrashReportFile &report);
// The value of a "Name: value" line of the report's head ("Signal", "Time", "Program", ...); "" when absent.
QString headField(const QByteArray &report, QByteArrayView name);
} // namespace CrashReportFolder
