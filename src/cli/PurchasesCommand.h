#pragma once

#include "cli/Command.h"

// purchases: the member's purchase history from the service, merged into the stored scan.
class PurchasesCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("purchases"); }
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;
};
