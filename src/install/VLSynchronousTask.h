#pragma once

// Runs one tool to completion and hands back everything it wrote to its standard output. The wait ends when the
// output ends (the tool, or a child of it that holds the output, closed it), not when the tool exits: the status
// is whatever was seen by then, 0 when the tool had not been seen to exit. Standard error stays the caller's.
// No shell: the tool gets its arguments as they are. One runner per command.
//
// A tool never waits for someone to answer it: its standard input is the input given, else /dev/null, and it runs in
// a session of its own, without a terminal to prompt on. A tool (with everything it started) that runs past its time
// limit, or that the watch stops, is killed.

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <optional>

class VLSynchronousTask
{
    Q_DECLARE_TR_FUNCTIONS(VLSynchronousTask)

public:
    static constexpr std::chrono::milliseconds kTimeLimit = std::chrono::minutes(30);
    // Asked every few milliseconds while the tool runs: a non-empty answer stops the tool, and is why it failed.
    using Watch = std::function<QString()>;

    void setTimeLimit(std::chrono::milliseconds limit) { m_timeLimit = limit; }
    void setWatch(Watch watch) { m_watch = std::move(watch); }
    // The tool's name in failure texts, where launchPath is a program that runs it.
    void setName(const QString &name) { m_name = name; }

    // launchPath: the tool's absolute path; directory: its working folder, or "" to keep ours. With input, the
    // tool reads it and then end of file; without, it reads /dev/null.
    void run(const QString &launchPath, const QString &directory, const QStringList &args,
             const std::optional<QByteArray> &input);

    // The output, when the tool started and its status was 0; nullopt otherwise, with the reason in failure.
    static std::optional<QByteArray> task(const QString &launchPath, const QString &directory, const QStringList &args,
                                          const std::optional<QByteArray> &input = std::nullopt,
                                          QString *failure = nullptr);

    const QByteArray &output() const { return m_output; }
    bool done() const { return m_done; }
    int result() const { return m_result; }
    // Why the run failed, in words for the user ("unzip ended with status 82"); "" when it succeeded.
    const QString &failureText() const { return m_failure; }

private:
    void describeFailure(const QString &launchPath, bool started, bool timedOut, const QString &stoppedBecause);

    std::chrono::milliseconds m_timeLimit = kTimeLimit;
    Watch m_watch;
    QString m_name;
    QByteArray m_output;
    QString m_failure;
    bool m_done = false;
    int m_result = 0;
};
