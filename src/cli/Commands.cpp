#include "cli/Command.h"

#include "cli/InspectCommand.h"
#include "cli/VersionCommand.h"

std::vector<std::unique_ptr<Command>> allCommands()
{
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(std::make_unique<VersionCommand>());
    commands.push_back(std::make_unique<InspectCommand>());
    return commands;
}
