#include "platform/LoginItem.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

QString configFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
}

// Exec lines quote each argument so a path with spaces stays one word, as desktop entries require.
QString execLine(const QStringList &command)
{
    QStringList quoted;
    for (QString word : command) {
        word.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
            .replace(QLatin1Char('"'), QStringLiteral("\\\""))
            .replace(QLatin1Char('`'), QStringLiteral("\\`"))
            .replace(QLatin1Char('$'), QStringLiteral("\\$"));
        quoted << QLatin1Char('"') + word + QLatin1Char('"');
    }
    return quoted.join(QLatin1Char(' '));
}

} // namespace

namespace LoginItem {

QString autostartPath()
{
    return configFolder() + QStringLiteral("/autostart/velmora.desktop");
}

bool add(const QStringList &command)
{
    QDir().mkpath(QFileInfo(autostartPath()).path());
    const QByteArray entry = QStringLiteral("[Desktop Entry]\nType=Application\nName=Velmora Desktop\n"
                                            "Comment=Keeps your applications up to date\nExec=%1\n"
                                            "X-GNOME-Autostart-enabled=true\nNoDisplay=true\n")
                                 .arg(execLine(command))
                                 .toUtf8();
    QSaveFile file(autostartPath());
    return file.open(QIODevice::WriteOnly) && file.write(entry) == entry.size() && file.commit();
}

bool remove()
{
    return !exists() || QFile::remove(autostartPath());
}

bool exists()
{
    return QFileInfo::exists(autostartPath());
}

QStringList removePreviousAgent()
{
    const QStringList paths{QDir::homePath() +
                                QStringLiteral("/Library/LaunchAgents/com.velmora.desktop5.scanner.plist"),
                            configFolder() + QStringLiteral("/autostart/com.velmora.desktop5.scanner.desktop")};
    QStringList failed;
    for (const QString &path : paths) {
        if (QFileInfo::exists(path) && !QFile::remove(path)) {
            failed << path;
        }
    }
    return failed;
}

} // namespace LoginItem
