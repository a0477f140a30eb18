#pragma once

#include "cli/Command.h"

class VLApp;

// ignore | set-current | unset-current | dont-check APP [--undo]: one of the user's per-app choices, kept in the
// stored scan as the desktop program keeps it.
class ChoiceCommand : public Command
{
public:
    enum class Choice { Ignore, SetCurrent, UnsetCurrent, DontCheck };

    explicit ChoiceCommand(Choice choice) : m_choice(choice) {}
    QString name() const override;
    QString description() const override;
    QString help() const override;
    int execute(const QStringList &arguments, CommandContext &ctx) override;

private:
    void apply(VLApp &app, bool undo) const;

    Choice m_choice;
};
