#include "cli/MemberSession.h"

#include "services/VLMemberAccount.h"

namespace MemberSession {

bool restore(VLMemberAccount &account)
{
    account.loadAccountFromKeychain();
    if (account.password.isEmpty()) {
        account.loadAccountFromCookie();
    }
    if (account.email.isEmpty() || account.password.isEmpty()) {
        return false;
    }
    account.login();
    return account.isLoggedIn;
}

bool require(VLMemberAccount &account, CommandContext &ctx)
{
    if (restore(account)) {
        return true;
    }
    ctx.err << "error: "
            << (account.errorfield.isEmpty() ? Cli::tr("not signed in; run velmora-cli account login first")
                                             : account.errorfield)
            << '\n';
    return false;
}

} // namespace MemberSession
