#pragma once

#include "cli/Command.h"

// version clean TEXT | compare A B | outdated LOCAL REMOTE: the version rules from a terminal.
class VersionCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("version"); }
    QString description() const override;
    QString help() const override;
    bool talksToService() const override { return false; }
    int execute(const QStringList &arguments, CommandContext &ctx) override;
    bool takesArgumentsVerbatim(const QStringList &arguments) const override;
};
