#pragma once

#include "cli/Command.h"

// scan [--json]: one scan of this machine, printed in scan order; the store is left as it is.
class ScanCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("scan"); }
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;
};
