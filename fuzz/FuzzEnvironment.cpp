#include "FuzzEnvironment.h"

#include <QDir>
#include <QTemporaryDir>

#include <cstdio>

namespace FuzzEnvironment {

void silenceMessages()
{
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &message) {
        if (type == QtFatalMsg) {
            std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
        }
    });
}

QString isolateFiles()
{
    // Removed when the process exits normally (libFuzzer calls exit() at the end of a timed run); a crashed run
    // leaves it inside the TMPDIR it was started with.
    static const QTemporaryDir sandbox(QDir::tempPath() + QStringLiteral("/velmora-fuzz-XXXXXX"));
    if (!sandbox.isValid()) {
        qFatal("cannot make a private folder for the fuzz target");
    }
    const QString root = sandbox.path();
    const std::pair<const char *, QString> folders[] = {
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
    return root;
}

} // namespace FuzzEnvironment
