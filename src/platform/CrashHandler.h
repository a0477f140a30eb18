#pragma once

// While a CrashHandler lives, a fatal signal (SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT) writes one crash report into
// a file opened beforehand, with async-signal-safe calls only: the signal and its address, the time, the program and
// version, the thread, a backtrace and the last log lines (LogRing). The process then dies of the same signal, as it
// would have without us. One handler per process; the long-running programs make one at start.
//
// The backtrace names our functions when the program exports its symbols (linked with ENABLE_EXPORTS, -rdynamic);
// functions with internal linkage show as offsets into the program.

#include <QString>

class CrashHandler
{
public:
    // program: the name the report gives the program ("velmora-cli"). Opens a new report file in
    // CrashReportFolder; with none to be had, nothing is installed and isInstalled() says so.
    explicit CrashHandler(const QString &program);
    ~CrashHandler(); // default actions back; the file goes, as nothing was written into it
    CrashHandler(const CrashHandler &) = delete;
    CrashHandler &operator=(const CrashHandler &) = delete;

    bool isInstalled() const { return m_fd >= 0; }
    QString reportPath() const { return m_path; }

private:
    int m_fd = -1;
    QString m_path;
};
