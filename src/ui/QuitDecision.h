#pragma once

// What a request to quit means. The gear menu's "Quit Velmora Desktop" and the end of the session quit at once.
// Quitting from the window (or closing it) leaves the program checking in the background behind its tray icon;
// Shift held makes it a real quit. Without a tray icon the window's quit is real, unless the user asked to keep
// checking in the background ("quitBackGroundWhenStatusItemHidden").

namespace QuitDecision {

enum class Source { GearMenu, Window, SessionEnding };
enum class Outcome { Quit, KeepInBackground };

struct Request
{
    Source source = Source::Window;
    bool shiftHeld = false;
    // "showStatusItem" and a tray to put the icon in.
    bool statusItemShown = true;
    bool quitBackGroundWhenStatusItemHidden = false;
};

Outcome decide(const Request &request);
// The analytics action of the outcome: "APP_QUIT_FULL" or "APP_QUIT_PARTIAL".
const char *analyticsAction(Outcome outcome);

} // namespace QuitDecision
