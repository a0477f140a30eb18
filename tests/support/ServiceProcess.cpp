#include "support/ServiceProcess.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QThread>

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

// Ends a process with SIGTERM, as an operator would; true when it ended cleanly (or never ran).
bool end(QProcess &process)
{
    if (process.state() != QProcess::NotRunning) {
        process.terminate();
        if (!process.waitForFinished(10000)) {
            process.kill();
            process.waitForFinished();
            return false;
        }
    }
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

} // namespace

ServiceProcess::ServiceProcess() : m_nginx(qEnvironmentVariable("VELMORA_TEST_NGINX"))
{
    QFile urlFile(qEnvironmentVariable("VELMORA_TEST_POSTGRES_URL_FILE"));
    if (urlFile.fileName().isEmpty()) {
        // Several processes on one SQLite file are not what an operator runs: start() fails.
        if (!m_nginx.isEmpty())
            return;
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
    if (!m_dir.isValid() || m_database.isEmpty() || !m_processes.empty())
        return false;
    if (!importFiles.isEmpty() && runCommand(QStringList{QStringLiteral("import")} + importFiles) != 0)
        return false;
    QUrl address;
    QStringList ports;
    for (int i = m_nginx.isEmpty() ? 1 : 3; i > 0; --i) {
        address = startProcess();
        if (!address.isValid())
            break;
        ports.append(QString::number(address.port()));
    }
    if (address.isValid() && !m_nginx.isEmpty())
        address = startFront(ports);
    if (!address.isValid()) {
        stop();
        return false;
    }
    m_baseUrl = address.toString();
    m_port = quint16(address.port());
    return true;
}

QUrl ServiceProcess::startProcess()
{
    QProcess &process = *m_processes.emplace_back(std::make_unique<QProcess>());
    process.setStandardErrorFile(m_dir.filePath(QStringLiteral("service-%1.log").arg(m_processes.size())));
    QStringList arguments{QStringLiteral("serve"),
                          QStringLiteral("--listen"),
                          QStringLiteral("127.0.0.1:0"),
                          QStringLiteral("--db"),
                          databasePath(),
                          QStringLiteral("--key-file"),
                          keyFilePath()};
    if (!m_filesDir.isEmpty())
        arguments << QStringLiteral("--files") << m_filesDir;
    process.start(binaryPath(), arguments);
    const QDeadlineTimer deadline(startTimeoutMs);
    while (!process.canReadLine() && process.state() != QProcess::NotRunning && !deadline.hasExpired())
        process.waitForReadyRead(int(std::max<qint64>(1, deadline.remainingTime())));
    const QUrl url(QString::fromUtf8(process.readLine().trimmed()));
    return url.isValid() && url.port() > 0 ? url : QUrl();
}

QUrl ServiceProcess::startFront(const QStringList &ports)
{
    QProcess site;
    site.start(QStringLiteral(VELMORA_SOURCE_DIR "/tests/service/nginx-site.sh"),
               QStringList{m_dir.path(), m_filesDir.isEmpty() ? filesDir() : m_filesDir} + ports);
    if (!site.waitForFinished(commandTimeoutMs) || site.exitStatus() != QProcess::NormalExit || site.exitCode() != 0)
        return {};
    const QUrl url(QString::fromUtf8(site.readAllStandardOutput().trimmed()));
    // nginx writes its pid file once it listens (one left by a killed nginx is removed first).
    const QString pidFile = m_dir.filePath(QStringLiteral("nginx.pid"));
    QFile::remove(pidFile);
    m_front.start(m_nginx, {QStringLiteral("-p"), m_dir.path(), QStringLiteral("-c"),
                            m_dir.filePath(QStringLiteral("nginx.conf")), QStringLiteral("-e"),
                            m_dir.filePath(QStringLiteral("nginx-error.log")), QStringLiteral("-g"),
                            QStringLiteral("daemon off;")});
    if (!m_front.waitForStarted())
        return {};
    const QDeadlineTimer deadline(startTimeoutMs);
    while (!QFile::exists(pidFile)) {
        if (deadline.hasExpired() || m_front.waitForFinished(10))
            return {};
    }
    return url;
}

bool ServiceProcess::stop()
{
    bool clean = end(m_front);
    for (const std::unique_ptr<QProcess> &process : m_processes)
        clean = end(*process) && clean;
    m_processes.clear();
    return clean;
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
    return m_processes.empty() ? 0 : m_processes.front()->processId();
}

QByteArray ServiceProcess::log() const
{
    QByteArray lines;
    const QDir dir(m_dir.path());
    for (const QString &name : dir.entryList({QStringLiteral("service-*.log")}, QDir::Files, QDir::Name)) {
        QFile file(dir.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            lines += file.readAll();
    }
    return lines;
}
