#pragma once

// How a fixed command gets administrator rights: run as it is when the process is root already, otherwise behind
// the command in the setting "escalationCommand" (pkexec by default; its words split without a shell). The
// command's program must be an absolute path, since the escalation tool starts it with a clean environment.

#include <QString>
#include <QStringList>

struct CommandLine
{
    QString program; // absolute path, or "" when the escalation tool cannot be found
    QStringList arguments;
};

namespace PrivilegedCommand {

enum class Escalation { WhenNotRoot, Always };

CommandLine commandLine(const QStringList &command, Escalation escalation = Escalation::WhenNotRoot);
// Whether an escalation tool's exit status says the user dismissed the prompt or was refused (pkexec: 126, 127).
bool wasRefused(int status);

} // namespace PrivilegedCommand
