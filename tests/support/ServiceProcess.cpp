#include "support/ServiceProcess.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>
#include <QUrl>

namespace {

constexpr int startTimeoutMs = 20000;
constexpr int commandTimeoutMs = 120000;

} // namespace

ServiceProcess::ServiceProcess() = default;

ServiceProcess::~ServiceProcess()
{
    stop();
}

QString ServiceProcess::binaryPath()
{
    return QStringLiteral(VELMORA_BINARY_DIR "/service/velmora-service");
}

QString ServiceProcess::sampleCataloguePath()
{
    return QStringLiteral(VELMORA_SOURCE_DIR "/service/sample/sample-catalogue.json");
}

QString ServiceProcess::filesDir()
{
    return QStringLiteral(VELMORA_BINARY_DIR "/service/files");
}

QString ServiceProcess::databasePath() const
{
    return m_dir.filePath(QStringLiteral("service.sqlite"));
}

QString ServiceProcess::baseUrl() const
{
    return m_baseUrl;
}

quint16 ServiceProcess::port() const
{
    return m_port;
}

int ServiceProcess::runCommand(const QStringList &args, QByteArray *output)
{
    QProcess process;
    process.setStandardErrorFile(m_dir.filePath(QStringLiteral("command.log")), QIODevice::Append);
    process.start(binaryPath(), args + QStringList{QStringLiteral("--db"), databasePath(), QStringLiteral("--key-file"),
                                                   m_dir.filePath(QStringLiteral("member.key"))});
    if (!process.waitForFinished(commandTimeoutMs) || process.exitStatus() != QProcess::NormalExit)
        return -1;
    if (output)
        *output = process.readAllStandardOutput();
    return process.exitCode();
}

bool ServiceProcess::start(const QStringList &importFiles)
{
    if (!m_dir.isValid() || m_process.state() != QProcess::NotRunning)
        return false;
    if (!importFiles.isEmpty() && runCommand(QStringList{QStringLiteral("import")} + importFiles) != 0)
        return false;
    m_process.setStandardErrorFile(m_dir.filePath(QStringLiteral("service.log")));
    QStringList arguments{QStringLiteral("serve"),
                          QStringLiteral("--listen"),
                          QStringLiteral("127.0.0.1:0"),
                          QStringLiteral("--db"),
                          databasePath(),
                          QStringLiteral("--key-file"),
                          m_dir.filePath(QStringLiteral("member.key"))};
    if (!m_filesDir.isEmpty())
        arguments << QStringLiteral("--files") << m_filesDir;
    m_process.start(binaryPath(), arguments);
    const QDeadlineTimer deadline(startTimeoutMs);
    while (!m_process.canReadLine() && m_process.state() != QProcess::NotRunning && !deadline.hasExpired())
        m_process.waitForReadyRead(int(std::max<qint64>(1, deadline.remainingTime())));
    const QUrl url(QString::fromUtf8(m_process.readLine().trimmed()));
    if (!url.isValid() || url.port() <= 0) {
        stop();
        return false;
    }
    m_baseUrl = url.toString();
    m_port = quint16(url.port());
    return true;
}

bool ServiceProcess::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    m_process.terminate();
    if (!m_process.waitForFinished(10000)) {
        m_process.kill();
        m_process.waitForFinished();
        return false;
    }
    return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
}

bool ServiceProcess::waitForLog(const QByteArray &fragment, int timeoutMs) const
{
    const QDeadlineTimer deadline(timeoutMs);
    while (!log().contains(fragment)) {
        if (deadline.hasExpired())
            return false;
        QThread::msleep(10);
    }
    return true;
}

qint64 ServiceProcess::processId() const
{
    return m_process.processId();
}

QByteArray ServiceProcess::log() const
{
    QFile file(m_dir.filePath(QStringLiteral("service.log")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
