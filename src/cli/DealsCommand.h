#pragma once

#include "cli/Command.h"

// deals: the promotions list from the deals host; the first two are featured.
class DealsCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("deals"); }
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;
};
