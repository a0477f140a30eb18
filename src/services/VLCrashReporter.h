#pragma once

// Crash reporting for a long-running program, the launch step: while it lives, a crash writes a report
// (CrashHandler); at start, the reports an earlier run left unsent go out by themselves when
// "QuincyAutomaticallySendCrashReports" is on, else only when the front end's asker gets the user's word (a front end
// without one leaves them for "velmora-cli crash-reports"). "QuincyActivated" off turns all of it off.

#include "platform/CrashReportFolder.h"

#include <QObject>

#include <memory>

class CrashHandler;
class CrashReportAsker;

class VLCrashReporter : public QObject
{
    Q_OBJECT

public:
    // The company the reports go to, as the question names it.
    static QString companyName() { return QStringLiteral("Velmora"); }
    static bool isActivated();
    static bool sendsAutomatically();

    // program: the name reports give the program ("velmora"); asker: the front end's, or null.
    VLCrashReporter(const QString &program, CrashReportAsker *asker = nullptr, QObject *parent = nullptr);
    ~VLCrashReporter() override;

    // Installs the handler and deals with the reports left unsent; finished() follows once all are dealt with.
    void startCrashReporting();

signals:
    // A report waits for the user's word and the front end has no asker.
    void reportWaiting(const QString &path);
    void finished();

private:
    void dealWithNext();
    void send(const CrashReportFile &file, const QString &details);

    QString m_program;
    CrashReportAsker *m_asker;
    std::unique_ptr<CrashHandler> m_handler;
    QList<CrashReportFile> m_unsent;
};
