#pragma once

// Runs one tool to completion and hands back everything it wrote to its standard output. The wait ends when the
// output ends (the tool, or a child of it that holds the output, closed it), not when the tool exits: the status
// is whatever was seen by then, 0 when the tool had not been seen to exit. Standard error stays the caller's.
// No shell: the tool gets its arguments as they are. One runner per command.

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

class VLSynchronousTask
{
public:
    // launchPath: the tool's absolute path; directory: its working folder, or "" to keep ours. With input, the
    // tool reads it and then end of file; without, its standard input stays open (a tool that reads it waits).
    void run(const QString &launchPath, const QString &directory, const QStringList &args,
             const std::optional<QByteArray> &input);

    // The output, when the tool started and its status was 0; nullopt otherwise.
    static std::optional<QByteArray> task(const QString &launchPath, const QString &directory, const QStringList &args,
                                          const std::optional<QByteArray> &input = std::nullopt);

    const QByteArray &output() const { return m_output; }
    bool done() const { return m_done; }
    int result() const { return m_result; }

private:
    QByteArray m_output;
    bool m_done = false;
    int m_result = 0;
};
