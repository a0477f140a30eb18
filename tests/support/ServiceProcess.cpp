#include "support/ServiceProcess.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QThread>
#include <QUrl>

namespace {

constexpr int startTimeoutMs = 20000;
constexpr int commandTimeoutMs = 120000;

// Runs psql on the server's own database; true when it succeeded.
bool psql(const QString &serverUrl, const QString &command)
{
    QProcess process;
    process.start(QStringLiteral("psql"), {QStringLiteral("-qX"), serverUrl, QStringLiteral("-c"), command});
    return process.waitForFinished(commandTimeoutMs) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

} // namespace

ServiceProcess::ServiceProcess()
{
    QFile urlFile(qEnvironmentVariable("VELMORA_TEST_POSTGRES_URL_FILE"));
    if (urlFile.fileName().isEmpty()) {
        m_database = m_dir.filePath(QStringLiteral("service.sqlite"));
        return;
    }
    // Left empty when the server cannot be reached, so start() fails rather than testing SQLite again.
    if (!urlFile.open(QIODevice::ReadOnly))
        return;
    m_serverUrl = QString::fromUtf8(urlFile.readAll().trimmed());
    const QString name = QStringLiteral("velmora_test_%1").arg(QRandomGenerator::global()->generate64(), 0, 16);
    if (psql(m_serverUrl, QStringLiteral("CREATE DATABASE ") + name))
        m_database = m_serverUrl.left(m_serverUrl.lastIndexOf(u'/') + 1) + name;
}

ServiceProcess::~ServiceProcess()
{
    stop();
    if (!m_serverUrl.isEmpty() && !m_database.isEmpty())
        psql(m_serverUrl, QStringLiteral("DROP DATABASE ") + m_database.mid(m_database.lastIndexOf(u'/') + 1) +
                              QStringLiteral(" WITH (FORCE)"));
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
    return m_database;
}

QString ServiceProcess::keyFilePath() const
{
    return m_dir.filePath(QStringLiteral("member.key"));
}

QByteArray ServiceProcess::databaseBytes() const
{
    if (m_serverUrl.isEmpty()) {
        QFile file(m_database);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QProcess dump;
    dump.start(QStringLiteral("pg_dump"), {m_database});
    return dump.waitForFinished(commandTimeoutMs) ? dump.readAllStandardOutput() : QByteArray();
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
                                                   keyFilePath()});
    if (!process.waitForFinished(commandTimeoutMs) || process.exitStatus() != QProcess::NormalExit)
        return -1;
    if (output)
        *output = process.readAllStandardOutput();
    return process.exitCode();
}

bool ServiceProcess::start(const QStringList &importFiles)
{
    if (!m_dir.isValid() || m_database.isEmpty() || m_process.state() != QProcess::NotRunning)
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
                          keyFilePath()};
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
