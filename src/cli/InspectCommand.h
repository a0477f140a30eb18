#pragma once

#include "cli/Command.h"

// inspect PATH...: reads bundles on disk as the scanner would and prints what the record holds.
class InspectCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("inspect"); }
    QString description() const override;
    QString help() const override;
    bool talksToService() const override { return false; }
    int execute(const QStringList &arguments, CommandContext &ctx) override;
};
