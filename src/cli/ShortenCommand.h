#pragma once

#include "cli/Command.h"

// shorten URL: a short link for URL from the short-link host.
class ShortenCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("shorten"); }
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;
};
