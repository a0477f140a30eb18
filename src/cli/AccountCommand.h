#pragma once

#include "cli/Command.h"

class VLMemberAccount;

// account login | signup | status | profile | logout | forgot-password: the member account with the service. A
// password is read from the terminal without echo, or from stdin with --password-stdin; never from the command line.
class AccountCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("account"); }
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;

private:
    int login(const QStringList &options, CommandContext &ctx);
    int signup(const QStringList &options, CommandContext &ctx);
    int status(CommandContext &ctx);
    int profile(const QStringList &options, CommandContext &ctx);
    int logout(CommandContext &ctx);
    int forgotPassword(CommandContext &ctx);
    int usage(const QString &problem, CommandContext &ctx) const;
    void printMember(const VLMemberAccount &account, CommandContext &ctx) const;
};
