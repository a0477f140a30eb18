#include "cli/DealsCommand.h"

#include "cli/AppsOutput.h"
#include "cli/CliFeedback.h"
#include "services/VLPromos.h"

QString DealsCommand::description() const
{
    return Cli::tr("Show the current deals");
}

QString DealsCommand::help() const
{
    return Cli::tr("Usage: velmora-cli deals [--json]\n"
                   "\n"
                   "Prints the discounted apps of the deals host, the two featured ones first: display name, deal\n"
                   "id (for velmora-cli cart), price, discount, and \"featured\" for the first two.\n");
}

int DealsCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    if (!arguments.isEmpty()) {
        ctx.err << "error: " << Cli::tr("unexpected argument %1").arg(arguments.first()) << "\n\n" << help();
        return ExitUsage;
    }
    CliFeedback feedback(ctx.err);
    VLPromos promos;
    promos.getPromos(QStringLiteral("promos"));
    promos.waitUntilDone();
    if (promos.failed() || promos.serverApps.isEmpty()) {
        ctx.err << "error: " << Cli::tr("no deals could be had from the deals host") << '\n';
        return ExitFailure;
    }
    AppList deals;
    for (const QVariant &entry : std::as_const(promos.serverApps)) {
        deals.append(std::make_shared<VLApp>(VLApp::initWithPromoItem(entry.toMap())));
    }
    const VLApp *first = deals.value(0).get();
    const VLApp *second = deals.value(1).get();
    printApps(deals, ctx, [first, second](const VLApp &app) {
        const bool featured = &app == first || &app == second;
        return QStringList{app.displayName, app.deal_id, app.deal_price, app.discount,
                           featured ? QStringLiteral("featured") : QString()};
    });
    return ExitSuccess;
}
