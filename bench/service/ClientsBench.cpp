// What a normal client of velmora-service sees while others are slow or greedy, and what greedy clients cost it:
//
//   bench_service_clients [--trickling 0,16,64,256] [--seconds S] [--burst 64,256,512] [--flood-mib N]
//                         [--url http://HOST:PORT --pid PID]
//
// 1. N clients send a request head one byte a second (reconnecting when the service cuts them off) while a normal
//    request is made every 100 ms on a fresh connection: how many are answered within 5 s, and how fast.
// 2. N connections opened at once, one request each: how many are answered, reset or left waiting.
// 3. An endless chunked body and endless header lines, sent as fast as the service takes them (up to --flood-mib):
//    the service's answer and how much its memory grows.
// Without --url it starts its own service on a free port with a fresh database; --pid names a running service's
// process for the memory figures.

#include "support/ServiceProcess.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QUrl>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

const char normalRequest[] = "GET /vld6blacklist HTTP/1.1\r\nHost: bench\r\nConnection: close\r\n\r\n";
constexpr int answerTimeoutMs = 5000;

// A non-blocking connection to the service, or -1.
int openConnection(const sockaddr_in &address)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return -1;
    if (::connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 || errno == EINPROGRESS)
        return fd;
    ::close(fd);
    return -1;
}

int remainingMs(Clock::time_point deadline)
{
    return int(
        std::max<qint64>(0, std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count()));
}

// Sends all bytes before the deadline; false when the service refuses them or the time is up.
bool sendAll(int fd, const char *data, size_t size, Clock::time_point deadline)
{
    while (size > 0) {
        pollfd p{fd, POLLOUT, 0};
        if (::poll(&p, 1, remainingMs(deadline)) <= 0)
            return false;
        const ssize_t sent = ::send(fd, data, size, MSG_NOSIGNAL);
        if (sent < 0 && errno != EAGAIN)
            return false;
        if (sent > 0) {
            data += sent;
            size -= size_t(sent);
        }
    }
    return true;
}

// Reads until the service closes the connection or the deadline passes; what came, or nothing on a reset.
QByteArray readToEnd(int fd, Clock::time_point deadline, bool *complete = nullptr)
{
    QByteArray answer;
    char buffer[16384];
    for (;;) {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, remainingMs(deadline)) <= 0)
            break;
        const ssize_t got = ::recv(fd, buffer, sizeof buffer, 0);
        if (got < 0 && errno == EAGAIN)
            continue;
        if (complete)
            *complete = got == 0;
        if (got <= 0)
            return got == 0 ? answer : QByteArray();
        answer.append(buffer, got);
    }
    return answer;
}

// The latency of one normal request on a fresh connection in milliseconds, or -1 without an answer in time.
double timedRequest(const sockaddr_in &address)
{
    const Clock::time_point start = Clock::now();
    const Clock::time_point deadline = start + std::chrono::milliseconds(answerTimeoutMs);
    const int fd = openConnection(address);
    const bool answered = fd >= 0 && sendAll(fd, normalRequest, sizeof normalRequest - 1, deadline) &&
                          readToEnd(fd, deadline).startsWith("HTTP/1.1 200");
    if (fd >= 0)
        ::close(fd);
    return answered ? Milliseconds(Clock::now() - start).count() : -1;
}

// Keeps N connections sending an endless request head, a byte a second each, and reopens any the service closes.
class Tricklers
{
public:
    Tricklers(const sockaddr_in &address, int count) : m_address(address), m_fds(size_t(count), -1)
    {
        m_thread = std::thread([this] { run(); });
    }
    ~Tricklers()
    {
        m_stop = true;
        m_thread.join();
        for (const int fd : m_fds)
            if (fd >= 0)
                ::close(fd);
    }
    int cutOff() const { return m_cutOff; }

private:
    void run()
    {
        static const QByteArray head = "GET /vld6blacklist HTTP/1.1\r\nHost: bench\r\nX-Slow: ";
        std::vector<size_t> sent(m_fds.size(), 0);
        while (!m_stop) {
            for (size_t i = 0; i < m_fds.size(); ++i) {
                int &fd = m_fds[i];
                pollfd p{fd, POLLIN, 0};
                if (fd >= 0 && ::poll(&p, 1, 0) > 0) { // an answer or a close: the service cut it off
                    ::close(fd);
                    fd = -1;
                    ++m_cutOff;
                }
                if (fd < 0) {
                    fd = openConnection(m_address);
                    sent[i] = 0;
                }
                const char byte = sent[i] < size_t(head.size()) ? head.at(qsizetype(sent[i])) : 'a';
                if (fd >= 0 && ::send(fd, &byte, 1, MSG_NOSIGNAL) == 1)
                    ++sent[i];
            }
            for (int tick = 0; tick < 10 && !m_stop; ++tick)
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }

    sockaddr_in m_address;
    std::vector<int> m_fds;
    std::atomic<bool> m_stop = false;
    std::atomic<int> m_cutOff = 0;
    std::thread m_thread;
};

void trickleRound(const sockaddr_in &address, int count, int seconds)
{
    Tricklers tricklers(address, count);
    std::this_thread::sleep_for(std::chrono::seconds(2)); // all of them connected and started
    std::vector<double> latencies;
    int attempts = 0;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
    while (Clock::now() < end) {
        ++attempts;
        const double ms = timedRequest(address);
        if (ms >= 0)
            latencies.push_back(ms);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    std::sort(latencies.begin(), latencies.end());
    const auto at = [&](double p) {
        return latencies.empty() ? 0.0
                                 : latencies[std::min(latencies.size() - 1, size_t(p * double(latencies.size())))];
    };
    std::printf("  %9d  %5zu of %-5d  %8.1f  %8.1f  %8.1f  %d\n", count, latencies.size(), attempts, at(0.5), at(0.99),
                latencies.empty() ? 0.0 : latencies.back(), tricklers.cutOff());
}

void burstRound(const sockaddr_in &address, int count)
{
    std::vector<int> fds;
    for (int i = 0; i < count; ++i)
        fds.push_back(openConnection(address));
    const Clock::time_point start = Clock::now();
    const Clock::time_point deadline = start + std::chrono::seconds(10);
    std::vector<std::thread> readers;
    std::atomic<int> answered = 0, reset = 0, waiting = 0;
    // A few threads share the connections, so the requests go out together.
    for (int t = 0; t < 8; ++t) {
        readers.emplace_back([&, t] {
            for (size_t i = size_t(t); i < fds.size(); i += 8) {
                bool complete = false;
                const bool sent = fds[i] >= 0 && sendAll(fds[i], normalRequest, sizeof normalRequest - 1, deadline);
                const QByteArray answer = sent ? readToEnd(fds[i], deadline, &complete) : QByteArray();
                if (answer.startsWith("HTTP/1.1 200"))
                    ++answered;
                else if (sent && !complete && remainingMs(deadline) == 0)
                    ++waiting;
                else
                    ++reset;
            }
        });
    }
    for (std::thread &reader : readers)
        reader.join();
    for (const int fd : fds)
        if (fd >= 0)
            ::close(fd);
    std::printf("  %11d  %8d  %5d  %9d  %8.0f ms\n", count, int(answered), int(reset), int(waiting),
                Milliseconds(Clock::now() - start).count());
}

long residentKib(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (pid <= 0 || !status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLong();
    return 0;
}

// Sends the head, then the filler again and again until the service answers or closes, the cap is sent or 20 s
// pass; prints the outcome and the service's memory growth.
void floodRound(const sockaddr_in &address, qint64 pid, const char *what, const QByteArray &head,
                const QByteArray &filler, qint64 capBytes)
{
    const long before = residentKib(pid);
    long peak = before;
    const int fd = openConnection(address);
    const Clock::time_point start = Clock::now();
    const Clock::time_point deadline = start + std::chrono::seconds(20);
    qint64 sent = 0;
    qsizetype offset = 0; // into the filler, so a partly sent one is finished before the next
    QByteArray answer;
    bool ok = fd >= 0 && sendAll(fd, head.constData(), size_t(head.size()), deadline);
    while (ok && sent < capBytes && Clock::now() < deadline) {
        pollfd p{fd, POLLIN | POLLOUT, 0};
        if (::poll(&p, 1, remainingMs(deadline)) <= 0)
            break;
        if (p.revents & (POLLIN | POLLHUP | POLLERR)) {
            answer = readToEnd(fd, Clock::now() + std::chrono::seconds(2));
            break;
        }
        const ssize_t n = ::send(fd, filler.constData() + offset, size_t(filler.size() - offset), MSG_NOSIGNAL);
        ok = n >= 0 || errno == EAGAIN;
        sent += std::max<ssize_t>(0, n);
        offset = (offset + std::max<ssize_t>(0, n)) % filler.size();
        if (offset == 0 && (sent / filler.size()) % 64 == 0)
            peak = std::max(peak, residentKib(pid));
    }
    peak = std::max(peak, residentKib(pid));
    if (fd >= 0)
        ::close(fd);
    const QByteArray status = answer.left(answer.indexOf('\r'));
    std::printf("  %-24s  %7.1f MiB in %4.1f s  %-36s  +%ld MiB\n", what, double(sent) / 1048576.0,
                std::chrono::duration<double>(Clock::now() - start).count(),
                status.isEmpty() ? (ok ? "no answer, still open" : "connection reset") : status.constData(),
                (peak - before) / 1024);
}

QList<int> numbers(const QString &list)
{
    QList<int> result;
    for (const QString &item : list.split(u',', Qt::SkipEmptyParts))
        result.append(item.toInt());
    return result;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addOptions(
        {{QStringLiteral("trickling"), QStringLiteral("Numbers of trickling clients."), QStringLiteral("N,..."),
          QStringLiteral("0,16,64,256")},
         {QStringLiteral("seconds"), QStringLiteral("Duration of each trickling round."), QStringLiteral("S"),
          QStringLiteral("5")},
         {QStringLiteral("burst"), QStringLiteral("Numbers of simultaneous connections."), QStringLiteral("N,..."),
          QStringLiteral("64,256,512")},
         {QStringLiteral("flood-mib"), QStringLiteral("Most bytes a flood probe sends."), QStringLiteral("N"),
          QStringLiteral("256")},
         {QStringLiteral("url"), QStringLiteral("A running service instead of a fresh one."), QStringLiteral("URL")},
         {QStringLiteral("pid"), QStringLiteral("The running service's process id."), QStringLiteral("PID")}});
    parser.addHelpOption();
    parser.process(app);

    ServiceProcess service;
    QUrl url(parser.value(QStringLiteral("url")));
    qint64 pid = parser.value(QStringLiteral("pid")).toLongLong();
    if (!parser.isSet(QStringLiteral("url"))) {
        if (!service.start()) {
            std::fprintf(stderr, "error: the service did not start\n");
            return 1;
        }
        url = QUrl(service.baseUrl());
        pid = service.processId();
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(quint16(url.port()));
    if (::inet_pton(AF_INET, qPrintable(url.host()), &address.sin_addr) != 1) {
        std::fprintf(stderr, "error: --url wants http://IPV4:PORT\n");
        return 2;
    }
    std::printf("velmora-service at %s (process %lld)\n\n", qPrintable(url.toString()), pid);

    std::printf("A normal request every 100 ms while N clients trickle a request head (answered within %d s; ms):\n",
                answerTimeoutMs / 1000);
    std::printf("  trickling       answered       p50       p99       max  cut off\n");
    for (const int count : numbers(parser.value(QStringLiteral("trickling"))))
        trickleRound(address, count, parser.value(QStringLiteral("seconds")).toInt());

    std::printf("\nConnections opened at once, one request each (10 s to answer):\n");
    std::printf("  connections  answered  reset  left open  all done in\n");
    for (const int count : numbers(parser.value(QStringLiteral("burst"))))
        burstRound(address, count);

    std::printf("\nGreedy clients, as fast as the service reads:\n");
    const qint64 cap = parser.value(QStringLiteral("flood-mib")).toLongLong() * 1048576;
    const QByteArray chunk = QByteArray::number(65536, 16) + "\r\n" + QByteArray(65536, 'a') + "\r\n";
    floodRound(address, pid, "endless chunked body",
               "POST /nowhere HTTP/1.1\r\nHost: bench\r\nTransfer-Encoding: chunked\r\n\r\n", chunk, cap);
    floodRound(address, pid, "endless header lines", "GET /vld6blacklist HTTP/1.1\r\nHost: bench\r\n",
               "X-Filler: " + QByteArray(4000, 'a') + "\r\n", cap);
    return 0;
}
