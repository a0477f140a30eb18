#pragma once

#include "cli/Command.h"

// report APP --text TEXT: a problem report about one app of the stored scan.
class ReportCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("report"); }
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;
};
