#pragma once

// The last few kilobytes of the program's log lines, kept in memory so that a crash report can carry what the
// program was doing. Writers take a lock; the crash handler reads without one, as it must.

#include <QByteArrayView>

namespace LogRing {
// Adds one line (a newline is appended). Safe from any thread.
void append(QByteArrayView line);
// Writes the kept lines, oldest first, to fd with write() only; safe inside a signal handler.
void writeTo(int fd);
} // namespace LogRing
