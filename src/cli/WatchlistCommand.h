#pragma once

#include "cli/Command.h"

// watchlist [add APP | remove APP]: the member's watch list on the service, merged into the stored scan.
class WatchlistCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("watchlist"); }
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;
};
