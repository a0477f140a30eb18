#include "cli/CartCommand.h"

#include "cli/CliFeedback.h"
#include "cli/MemberSession.h"
#include "services/VLCartSender.h"
#include "services/VLMemberAccount.h"

QString CartCommand::description() const
{
    return Cli::tr("Buy a deal");
}

QString CartCommand::help() const
{
    return Cli::tr("Usage: velmora-cli cart DEAL\n"
                   "\n"
                   "Orders the deal with id DEAL (as velmora-cli deals shows it) for the signed-in member, with the\n"
                   "member's postal address. The purchase then shows in velmora-cli purchases.\n");
}

int CartCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    bool numeric = false;
    const qint64 deal = arguments.value(0).toLongLong(&numeric);
    if (arguments.size() != 1 || !numeric) {
        ctx.err << "error: " << Cli::tr("name one deal by its id") << "\n\n" << help();
        return ExitUsage;
    }
    CliFeedback feedback(ctx.err);
    VLMemberAccount account;
    if (!MemberSession::require(account, ctx)) {
        return ExitFailure;
    }
    VLCartSender cart;
    cart.post(VLCartSender::orderBody(account, deal));
    cart.waitUntilDone();
    if (cart.serverResonse < 200 || cart.serverResonse >= 300) {
        ctx.err << "error: " << Cli::tr("the deals host did not take the order") << '\n';
        return ExitFailure;
    }
    ctx.out << Cli::tr("Ordered deal %1").arg(deal) << '\n';
    return ExitSuccess;
}
