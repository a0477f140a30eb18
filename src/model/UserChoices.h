#pragma once

// The user's per-app choices, as the panel, the main window and velmora-cli make them. Each sets the record's
// verdict again at once, so the lists can be refiltered without another check.

class VLApp;

namespace UserChoices {

// Ignore: the current catalogue version is skipped; a newer one makes the app outdated again.
void ignore(VLApp &app);
void unignore(VLApp &app);
// Set to current: the installed copy counts as the catalogue's version until unset.
void setVersionToCurrent(VLApp &app);
void unsetVersionToCurrent(VLApp &app);
// Don't check: the app is never outdated while set.
void setDontCheckForUpdates(VLApp &app, bool dontCheck);

} // namespace UserChoices
