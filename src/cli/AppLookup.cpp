#include "cli/AppLookup.h"

#include <QDir>

AppList appsNamed(const AppList &apps, const QString &wanted)
{
    const QString wantedPath = QDir::cleanPath(QDir::current().absoluteFilePath(wanted));
    AppList matches;
    for (const AppRef &app : apps) {
        if (app->displayName == wanted || app->vlID == wanted || app->localPath == wantedPath) {
            matches.append(app);
        }
    }
    return matches;
}
