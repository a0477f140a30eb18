#pragma once

#include "cli/Command.h"

// list [--outdated | --installed | --all] [--json]: the records of the stored scan, in store order.
class ListCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("list"); }
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;
};
