#pragma once

// The program's log lines: its own fixed texts with the placeholders filled, one line each.
// They go through the "velmora" logging category; programs route that to the system log and,
// with --verbose or VELMORA_LOG=stderr, to stderr too (installLogRouting). Tests see them as Qt messages.

#include <QLoggingCategory>
#include <QString>

Q_DECLARE_LOGGING_CATEGORY(lcVelmora)

// Logs line with its secrets hidden (redactSecrets).
void vlLog(const QString &line);

// Replaces passwords, their MD5s, cookie values and tokens with "***": in request paths (plain or percent-encoded),
// form bodies, query items and cookie headers.
QString redactSecrets(const QString &text);

// Sends log lines to syslog, and also to stderr when copyToStderr or VELMORA_LOG=stderr.
void installLogRouting(bool copyToStderr);
