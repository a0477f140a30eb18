#include "cli/PurchasesCommand.h"

#include "cli/AppsOutput.h"
#include "cli/CliFeedback.h"
#include "cli/MemberSession.h"
#include "scan/VLMemberLists.h"
#include "scan/VLScanData.h"
#include "services/VLMemberAccount.h"
#include "services/VLPurchases.h"

QString PurchasesCommand::description() const
{
    return Cli::tr("Show the member's purchases");
}

QString PurchasesCommand::help() const
{
    return Cli::tr("Usage: velmora-cli purchases [--json]\n"
                   "\n"
                   "Prints the signed-in member's purchases, newest first: display name, catalogue id, order id,\n"
                   "order date, purchased version. They are merged into the stored scan, as the desktop program\n"
                   "keeps them.\n");
}

int PurchasesCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    if (!arguments.isEmpty()) {
        ctx.err << "error: " << Cli::tr("unexpected argument %1").arg(arguments.first()) << "\n\n" << help();
        return ExitUsage;
    }
    CliFeedback feedback(ctx.err);
    VLMemberAccount account;
    if (!MemberSession::require(account, ctx)) {
        return ExitFailure;
    }
    VLPurchases purchases;
    purchases.getPurchases(QStringLiteral("id=%1").arg(account.memberID));
    purchases.waitUntilDone();
    if (purchases.failed() || feedback.alerted()) {
        return ExitFailure;
    }
    VLScanData store;
    AppList bought;
    for (const AppRef &app : VLMemberLists::mergePurchaseItems(store, purchases.serverApps)) {
        if (!app->orderid.isNull()) {
            bought.append(app);
        }
    }
    printApps(bought, ctx, [](const VLApp &app) {
        return QStringList{app.displayName, app.vlID, app.orderid, app.orderDate, app.purchasedVersion};
    });
    return ExitSuccess;
}
