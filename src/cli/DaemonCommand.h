#pragma once

#include "cli/Command.h"

// daemon [--login-item]: start-up and the periodic checks without a display, until a signal ends it.
class DaemonCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("daemon"); }
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;
};
