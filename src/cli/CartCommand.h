#pragma once

#include "cli/Command.h"

// cart DEAL: orders one deal for the signed-in member.
class CartCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("cart"); }
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;
};
