#include "platform/LogRing.h"

#include <algorithm>
#include <atomic>
#include <mutex>

#include <unistd.h>

namespace {

constexpr size_t kRingBytes = 16 * 1024;

char g_ring[kRingBytes];
std::atomic<size_t> g_written = 0; // bytes ever appended; the next one goes to g_written % kRingBytes
std::mutex g_mutex;

void put(const char *data, size_t size)
{
    while (size > 0) {
        const size_t at = g_written.load(std::memory_order_relaxed) % kRingBytes;
        const size_t chunk = std::min(size, kRingBytes - at);
        std::copy_n(data, chunk, g_ring + at);
        g_written.fetch_add(chunk, std::memory_order_release);
        data += chunk;
        size -= chunk;
    }
}

void writeAll(int fd, const char *data, size_t size)
{
    while (size > 0) {
        const ssize_t done = ::write(fd, data, size);
        if (done <= 0) {
            return;
        }
        data += done;
        size -= static_cast<size_t>(done);
    }
}

} // namespace

namespace LogRing {

void append(QByteArrayView line)
{
    // A line longer than the ring keeps its end, which holds the newest part.
    const QByteArrayView kept = line.size() >= qsizetype(kRingBytes) ? line.last(kRingBytes - 1) : line;
    const std::lock_guard lock(g_mutex);
    put(kept.data(), size_t(kept.size()));
    put("\n", 1);
}

void writeTo(int fd)
{
    const size_t written = g_written.load(std::memory_order_acquire);
    if (written <= kRingBytes) {
        writeAll(fd, g_ring, written);
        return;
    }
    // The ring has wrapped: the oldest byte is at start. Skip to after the first line end, so no half line leads,
    // unless that end is the last byte (the ring then holds the tail of one long line, which is kept).
    const size_t start = written % kRingBytes;
    size_t skip = 0;
    while (skip < kRingBytes && g_ring[(start + skip) % kRingBytes] != '\n') {
        ++skip;
    }
    const size_t from = skip + 1 < kRingBytes ? (start + skip + 1) % kRingBytes : start;
    if (from < start) {
        writeAll(fd, g_ring + from, start - from);
        return;
    }
    writeAll(fd, g_ring + from, kRingBytes - from);
    writeAll(fd, g_ring, start);
}

} // namespace LogRing
