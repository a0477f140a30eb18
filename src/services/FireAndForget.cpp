#include "services/FireAndForget.h"

#include <QCoreApplication>
#include <QThreadPool>

#include <atomic>
#include <mutex>

namespace FireAndForget {

namespace {

std::atomic<bool> abandoned{false};

QThreadPool &pool()
{
    static QThreadPool requests;
    return requests;
}

void abandonAtExit()
{
    finish(0);
}

} // namespace

void send(WebRequest request)
{
    static std::once_flag registered;
    std::call_once(registered, [] { qAddPostRoutine(abandonAtExit); });
    if (abandoned) {
        return;
    }
    request.deadlineMs = request.deadlineMs > 0 ? std::min(request.deadlineMs, kDeadlineMs) : kDeadlineMs;
    request.timeoutMs = std::min(request.timeoutMs, kIdleMs);
    request.cancel = &abandoned;
    pool().start([request] { sendWebRequest(request); });
}

void finish(int timeoutMs)
{
    if (pool().waitForDone(timeoutMs)) {
        return;
    }
    abandoned = true;
    pool().clear();
    pool().waitForDone();
}

} // namespace FireAndForget
