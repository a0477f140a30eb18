#include "support/TestMain.h"

#include <QDir>

namespace TestSupport {

void isolateEnvironment(const QString &root)
{
    const QList<QPair<const char *, QString>> folders = {
        {"HOME", root + QStringLiteral("/home")},
        {"XDG_CONFIG_HOME", root + QStringLiteral("/home/.config")},
        {"XDG_DATA_HOME", root + QStringLiteral("/home/.local/share")},
        {"XDG_CACHE_HOME", root + QStringLiteral("/home/.cache")},
        {"TMPDIR", root + QStringLiteral("/tmp")},
    };
    for (const auto &[name, path] : folders) {
        QDir().mkpath(path);
        qputenv(name, QFile::encodeName(path));
    }
    qunsetenv("XDG_DATA_DIRS");
    qunsetenv("VELMORA_LOG");
}

} // namespace TestSupport
