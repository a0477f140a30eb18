#pragma once

#include "cli/Command.h"

// open-link URL: an install link, as the desktop program handles it.
class OpenLinkCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("open-link"); }
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;
};
