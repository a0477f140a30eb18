#include "cli/Command.h"

#include "cli/AccountCommand.h"
#include "cli/CartCommand.h"
#include "cli/CheckCommand.h"
#include "cli/ChoiceCommand.h"
#include "cli/CrashReportsCommand.h"
#include "cli/DaemonCommand.h"
#include "cli/DealsCommand.h"
#include "cli/DefaultsCommand.h"
#include "cli/InspectCommand.h"
#include "cli/ListCommand.h"
#include "cli/OpenLinkCommand.h"
#include "cli/PurchasesCommand.h"
#include "cli/ReportCommand.h"
#include "cli/ScanCommand.h"
#include "cli/ShortenCommand.h"
#include "cli/UpdateCommand.h"
#include "cli/VersionCommand.h"
#include "cli/WatchlistCommand.h"

std::vector<std::unique_ptr<Command>> allCommands()
{
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(std::make_unique<VersionCommand>());
    commands.push_back(std::make_unique<InspectCommand>());
    commands.push_back(std::make_unique<ScanCommand>());
    commands.push_back(std::make_unique<ListCommand>());
    commands.push_back(std::make_unique<CheckCommand>());
    commands.push_back(std::make_unique<UpdateCommand>(UpdateCommand::Scope::Named));
    commands.push_back(std::make_unique<UpdateCommand>(UpdateCommand::Scope::All));
    for (const auto choice : {ChoiceCommand::Choice::Ignore, ChoiceCommand::Choice::SetCurrent,
                              ChoiceCommand::Choice::UnsetCurrent, ChoiceCommand::Choice::DontCheck}) {
        commands.push_back(std::make_unique<ChoiceCommand>(choice));
    }
    commands.push_back(std::make_unique<DaemonCommand>());
    commands.push_back(std::make_unique<OpenLinkCommand>());
    commands.push_back(std::make_unique<DefaultsCommand>());
    commands.push_back(std::make_unique<AccountCommand>());
    commands.push_back(std::make_unique<WatchlistCommand>());
    commands.push_back(std::make_unique<PurchasesCommand>());
    commands.push_back(std::make_unique<DealsCommand>());
    commands.push_back(std::make_unique<CartCommand>());
    commands.push_back(std::make_unique<ReportCommand>());
    commands.push_back(std::make_unique<ShortenCommand>());
    commands.push_back(std::make_unique<CrashReportsCommand>());
    return commands;
}
