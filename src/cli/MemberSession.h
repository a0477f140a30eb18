#pragma once

// The member of a velmora-cli run, signed in as the desktop program signs in at start: the keychain's e-mail
// address and password, else the site's "login" cookie, then one log-in with the service.

#include "cli/Command.h"

class VLMemberAccount;

namespace MemberSession {
// Signs in from what is stored; false when nobody is stored or the service refused.
bool restore(VLMemberAccount &account);
// restore, with the error printed when nobody is signed in.
bool require(VLMemberAccount &account, CommandContext &ctx);
} // namespace MemberSession
