#pragma once

// The login item: an XDG autostart entry, ~/.config/autostart/velmora.desktop, and the removal of the previous
// major version's agent.

#include <QString>
#include <QStringList>

namespace LoginItem {

QString autostartPath();
// Writes the entry running command (program and arguments) at login, replacing any earlier one; false on failure.
bool add(const QStringList &command);
// Removes the entry when present; false when it exists and cannot be removed.
bool remove();
bool exists();

// The previous version's agent files ("~/Library/LaunchAgents/com.velmora.desktop5.scanner.plist" and its autostart
// form): removes those present, and returns the paths that could not be removed.
QStringList removePreviousAgent();

} // namespace LoginItem
