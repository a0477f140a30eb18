#include "ui/QuitDecision.h"

namespace QuitDecision {

Outcome decide(const Request &request)
{
    if (request.source != Source::Window || request.shiftHeld) {
        return Outcome::Quit;
    }
    if (request.statusItemShown || request.quitBackGroundWhenStatusItemHidden) {
        return Outcome::KeepInBackground;
    }
    return Outcome::Quit;
}

const char *analyticsAction(Outcome outcome)
{
    return outcome == Outcome::Quit ? "APP_QUIT_FULL" : "APP_QUIT_PARTIAL";
}

} // namespace QuitDecision
