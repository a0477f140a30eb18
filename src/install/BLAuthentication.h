#pragma once

// Running any command with administrator rights, shared by the whole program: asked for explicitly, kept until
// deauthenticate, and used to find and stop a process by name. Commands run as argument vectors through the
// setting "escalationCommand" (directly when the process is root); the password never passes through us.

#include "platform/PrivilegedCommand.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

class BLAuthentication;

class BLAuthenticationDelegate
{
public:
    virtual ~BLAuthenticationDelegate() = default;
    virtual void authenticationDidAuthorize(BLAuthentication *) {}
    virtual void authenticationDidDeauthorize(BLAuthentication *) {}
    virtual void authenticationDidExecute(BLAuthentication *) {}
    virtual void authenticationFailedExecute(BLAuthentication *) {}
    virtual void authenticationDidKill(BLAuthentication *) {}
    virtual void authenticationFailedKill(BLAuthentication *) {}
};

class BLAuthentication
{
public:
    explicit BLAuthentication(PrivilegedCommand::Escalation escalation = PrivilegedCommand::Escalation::WhenNotRoot);

    static BLAuthentication &sharedInstance();
    void setDelegate(BLAuthenticationDelegate *delegate) { m_delegate = delegate; }

    // Whether the rights are held already, without asking.
    bool isAuthenticated(const QString &command) const;
    // Readies the rights: the escalation tool shows its prompt when the command runs; a refusal there takes them
    // back.
    bool fetchPassword(const QString &command);
    bool authenticate(const QString &command);
    void deauthenticate();

    // Starts command with the rights and at most 19 arguments, without waiting for it.
    bool executeCommand(const QString &command, const QStringList &args);
    // The same, waiting for the command and its whole output; the output when it succeeded.
    std::optional<QByteArray> executeCommandSynced(const QString &command, const QStringList &args);

    // The id of a running process (not ours) whose command line contains name; 0 when none.
    qint64 getPID(const QString &name) const;
    // Sends signal to the process getPID finds.
    bool killProcess(const QString &name, int signal);

private:
    static constexpr int kMostArguments = 19;

    bool failedExecute(int status);

    PrivilegedCommand::Escalation m_escalation;
    BLAuthenticationDelegate *m_delegate = nullptr;
    bool m_authorized = false;
};
