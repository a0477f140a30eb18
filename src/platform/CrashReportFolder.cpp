#include "platform/CrashReportFolder.h"

#include "platform/AppPaths.h"
#include "platform/Log.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include <sys/stat.h>

namespace {

const QString kUnsent = QStringLiteral(".crash");
const QString kSent = QStringLiteral(".sent");

// The process a report file was opened by: the number before its extension ("velmora-cli-20261125-183000-4242").
qint64 ownerProcess(const QString &fileName)
{
    static const QRegularExpression pid(QStringLiteral("-(\\d+)\\.crash$"));
    const QRegularExpressionMatch match = pid.match(fileName);
    return match.hasMatch() ? match.captured(1).toLongLong() : 0;
}

bool processEnded(qint64 pid)
{
    return pid <= 0 || (::kill(pid_t(pid), 0) != 0 && errno == ESRCH);
}

QFileInfoList reportFiles()
{
    const QString folder = CrashReportFolder::folder();
    if (folder.isEmpty()) {
        return {};
    }
    QFileInfoList files =
        QDir(folder).entryInfoList({QStringLiteral("*.crash"), QStringLiteral("*.sent")}, QDir::Files | QDir::Hidden);
    std::sort(files.begin(), files.end(), [](const QFileInfo &a, const QFileInfo &b) {
        return a.lastModified() != b.lastModified() ? a.lastModified() > b.lastModified() : a.fileName() > b.fileName();
    });
    return files;
}

} // namespace

namespace CrashReportFolder {

QString folder()
{
    const QString path = AppPaths::dataFolder() + QStringLiteral("/Crash Reports");
    const QByteArray native = QFile::encodeName(path);
    if (::mkdir(native.constData(), 0700) != 0 && errno != EEXIST) {
        vlLog(QStringLiteral("cannot create the crash report folder %1").arg(path));
        return {};
    }
    return path;
}

QString newReportPath(const QString &program)
{
    prune(kKeptReports - 1);
    const QString base = folder();
    if (base.isEmpty()) {
        return {};
    }
    return base + QLatin1Char('/') + program + QLatin1Char('-') +
           QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss")) + QLatin1Char('-') +
           QString::number(QCoreApplication::applicationPid()) + kUnsent;
}

void prune(int keep)
{
    int kept = 0;
    for (const QFileInfo &file : reportFiles()) {
        if (file.size() == 0) {
            // An open file of a running process stays; one of a process that ended without crashing goes.
            if (processEnded(ownerProcess(file.fileName()))) {
                QFile::remove(file.filePath());
            }
        } else if (++kept > keep) {
            QFile::remove(file.filePath());
        }
    }
}

QList<CrashReportFile> reports()
{
    QList<CrashReportFile> result;
    for (const QFileInfo &file : reportFiles()) {
        if (file.size() > 0) {
            result.append({file.filePath(), file.lastModified().toUTC(), file.fileName().endsWith(kSent)});
        }
    }
    return result;
}

QByteArray read(const CrashReportFile &report)
{
    QFile file(report.path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool markSent(const CrashReportFile &report)
{
    if (report.sent) {
        return true;
    }
    QString sentPath = report.path;
    sentPath.replace(sentPath.size() - kUnsent.size(), kUnsent.size(), kSent);
    return QFile::rename(report.path, sentPath);
}

bool discard(const CrashReportFile &report)
{
    return QFile::remove(report.path);
}

QString headField(const QByteArray &report, QByteArrayView name)
{
    qsizetype start = 0;
    while (start < report.size()) {
        qsizetype end = report.indexOf('\n', start);
        end = end < 0 ? report.size() : end;
        const QByteArrayView line = QByteArrayView(report).sliced(start, end - start);
        if (line.isEmpty()) {
            break; // the head ends at the first empty line
        }
        if (line.startsWith(name) && line.sliced(name.size()).startsWith(": ")) {
            return QString::fromUtf8(line.sliced(name.size() + 2));
        }
        start = end + 1;
    }
    return {};
}

} // namespace CrashReportFolder
