#pragma once

// Fixed operations with administrator rights, each one run of velmora-place (PlaceTool): directly when the process
// is root, otherwise behind the command in the setting "escalationCommand" (pkexec by default). An installation is
// one run (a replacement, or all of a package's payloads), so it asks for the password once; the installed polkit
// action keeps that answer while this process runs, so an Update All asks once too. One helper belongs to one
// installer; once the user dismissed the prompt or was refused, it asks no more and its operations fail at once.

#include "install/PlaceTool.h"
#include "platform/PrivilegedCommand.h"

#include <QList>
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
    // A zip archive of source that holds source's folder itself.
    bool archivePathWithForcedAuthentication(const QString &source, const QString &archive);
    // Puts item at target in one step: the old copy kept aside until the new one is in place, put back on failure.
    bool replacePathWithForcedAuthentication(const QString &item, const QString &target);
    // Adds what each folder holds to its target (made when missing), all in one step.
    bool mergeFoldersWithForcedAuthentication(const QList<FolderMerge> &merges);

    // Installs package's payloads at their install locations under the setting volumeRoot; answers false whatever
    // happened, as the outcome was never reported to callers.
    bool runPKGInstallerWithForcedAuthentication(const QString &package);
    // The package's title, else its file name. Needs no rights.
    static QString queryInstallerWithPath(const QString &package);
    // The same installation, answering nothing.
    void runinstallerWithPath(const QString &package);

private:
    bool installPackage(const QString &package);
    bool runWithForcedAuthentication(const QString &verb, const QStringList &paths);

    PrivilegedCommand::Escalation m_escalation = PrivilegedCommand::Escalation::WhenNotRoot;
    bool m_refused = false;
};
