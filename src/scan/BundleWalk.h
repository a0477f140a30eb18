#pragma once

// Finds the software bundles in a set of folders by walking them, the way a file index would select them:
// application, preference-pane, screen-saver, web and generic plug-in and widget folders, the browser's cookie
// bundle, and composition files.

#include <QString>
#include <QStringList>

#include <atomic>

namespace BundleWalk {

// True when an entry with this file name (a folder when isFolder) is reported. Extensions ignore case.
bool isReportedBundle(const QString &fileName, bool isFolder);

// Every reported bundle under the scopes, sorted by file name ignoring case (equal names keep the order in which
// they were found: scope by scope). A reported bundle is not entered; links are followed, but a folder or bundle
// reached twice (a link loop, overlapping scopes) counts once, by a path without links where there is one. Missing
// folders are passed over; a folder that cannot be read, and a bundle whose name is not UTF-8 or whose path is too
// long for the system, are passed over with a log line.
// Stops early, with what it has, when cancel turns true.
QStringList findBundles(const QStringList &scopes, const std::atomic<bool> *cancel = nullptr);

} // namespace BundleWalk
