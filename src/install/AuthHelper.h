#pragma once

// Fixed operations that may need administrator rights, each run as an argument vector: directly when the process
// is root, otherwise through the command in the setting "escalationCommand" (pkexec by default). One helper
// belongs to one installer; once the user dismissed the prompt or was refused, the helper asks no more and its
// operations fail at once, so an installation never prompts again after a "no".

#include "platform/PrivilegedCommand.h"

#include <QString>
#include <QStringList>

class AuthHelper
{
public:
    AuthHelper();
    // Always: go through the escalation command even as root (for checking what it is asked to run).
    explicit AuthHelper(PrivilegedCommand::Escalation escalation);

    // Copies source to destination (links kept as links, modes kept); true when the copy completed.
    bool copyPathWithForcedAuthentication(const QString &source, const QString &destination);
    bool removePathWithForcedAuthentication(const QString &path);
    // Renames source to destination in the same file system.
    bool movePathWithForcedAuthentication(const QString &source, const QString &destination);
    // A zip archive of source that holds source's folder itself.
    bool archivePathWithForcedAuthentication(const QString &source, const QString &archive);

private:
    bool runWithForcedAuthentication(const QStringList &command);

    PrivilegedCommand::Escalation m_escalation = PrivilegedCommand::Escalation::WhenNotRoot;
    bool m_refused = false;
};
