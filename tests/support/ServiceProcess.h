#pragma once

// Runs the real velmora-service for a test: a fresh temporary database, an optional import, and a free
// loopback port. `serve --listen 127.0.0.1:0` binds an ephemeral port and prints the address it listens on
// as its first line on stdout; start() reads that line. The destructor stops the service.
//
// The database is an SQLite file, or, when VELMORA_TEST_POSTGRES_URL_FILE names a file holding a PostgreSQL
// server's address (postgresql://USER@HOST:PORT/postgres), a fresh database of its own on that server: the same
// suites run on either back end.
//
// When VELMORA_TEST_NGINX also names nginx, the service is three processes on that database behind nginx with the
// packaged site (tests/service/nginx-site.sh), which sends each request to the next process in turn: what one
// request leaves behind, the next one finds at another process. baseUrl() and port() are then nginx's, and log()
// holds every process's lines and nginx's for the requests it answered itself (files, bodies over its limit).

#include <QByteArray>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <QUrl>

#include <memory>
#include <vector>

class ServiceProcess
{
public:
    ServiceProcess();
    ~ServiceProcess();
    ServiceProcess(const ServiceProcess &) = delete;
    ServiceProcess &operator=(const ServiceProcess &) = delete;

    // Imports these JSON files first; with none, the service loads its bundled sample catalogue.
    bool start(const QStringList &importFiles = {});
    // Serves "/files/" from folder instead of the bundled update files; set before start().
    void setFilesDir(const QString &folder) { m_filesDir = folder; }
    QString baseUrl() const; // "http://127.0.0.1:PORT"
    quint16 port() const;
    // What --db takes: the SQLite file, or the PostgreSQL database's address.
    QString databasePath() const;
    QString keyFilePath() const;
    // Every stored byte: the SQLite file, or a dump of the PostgreSQL database.
    QByteArray databaseBytes() const;
    // Another velmora-service subcommand (args[0]) on the same database and key; returns its exit code
    // (-1 when it could not run), stdout in output.
    int runCommand(const QStringList &args, QByteArray *output = nullptr);

    // Stops the service now (SIGTERM, as an operator would); true when every process ended cleanly.
    bool stop();
    // What the service has logged so far (one line per request, "... METHOD TARGET STATUS BYTES ...").
    QByteArray log() const;
    // A request's line is written just after its answer is sent, so a test that has its answer may still be
    // ahead of the line: this waits (up to timeoutMs) until the log holds the fragment.
    bool waitForLog(const QByteArray &fragment, int timeoutMs = 5000) const;

    // The running service's (first) process id (0 when it is not running).
    qint64 processId() const;

    static QString binaryPath();
    // The catalogue a fresh service loads, and the folder its update files are served from ("/files/").
    static QString sampleCataloguePath();
    static QString filesDir();

private:
    // Starts one more process on a free port; its address, or an invalid one.
    QUrl startProcess();
    // Starts nginx in front of the processes on these ports; its address, or an invalid one.
    QUrl startFront(const QStringList &ports);

    QTemporaryDir m_dir;
    QString m_serverUrl; // the PostgreSQL server's own database, or empty
    QString m_database;  // --db
    QString m_nginx;     // nginx in front, or empty
    std::vector<std::unique_ptr<QProcess>> m_processes;
    QProcess m_front;
    QString m_baseUrl;
    QString m_filesDir;
    quint16 m_port = 0;
};
