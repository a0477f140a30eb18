#pragma once

#include "cli/Command.h"

// check [--background] [--json]: one check with the service, then the outdated apps.
class CheckCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("check"); }
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;
};
