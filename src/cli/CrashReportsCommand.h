#pragma once

#include "cli/Command.h"

// crash-reports [list|show N|send N [--details TEXT]|discard N]: the crash reports earlier runs left, and the user's
// word on each.
class CrashReportsCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("crash-reports"); }
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;
};
