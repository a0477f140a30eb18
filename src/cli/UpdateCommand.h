#pragma once

#include "cli/Command.h"

// "update APP..." and "update-all": downloads and installs the newest versions of outdated apps.
class UpdateCommand : public Command
{
public:
    enum class Scope { Named, All };
    explicit UpdateCommand(Scope scope) : m_scope(scope) {}

    QString name() const override;
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;

private:
    Scope m_scope;
};
