#pragma once

#include "cli/Command.h"

class VLSettings;

// defaults read [KEY] | write KEY [-bool|-int|-float|-string|-array] VALUE... | delete KEY: the program's settings.
class DefaultsCommand : public Command
{
public:
    QString name() const override { return QStringLiteral("defaults"); }
    QString description() const override;
    QString help() const override;
    bool talksToService() const override { return false; }
    int execute(const QStringList &arguments, CommandContext &ctx) override;

private:
    int read(const QStringList &arguments, CommandContext &ctx);
    int write(const QStringList &arguments, CommandContext &ctx);
    int remove(const QStringList &arguments, CommandContext &ctx);
    int usage(const QString &message, CommandContext &ctx);
};
