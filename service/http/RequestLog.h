#pragma once

// One line on stderr per request answered: time, client, method, target with its secrets hidden, status, bytes
// sent and, for a refusal, its reason.

#include <QString>

#include <string>

namespace RequestLog {

void write(const std::string &client, const std::string &method, const std::string &target, int status,
           const std::string &bytes, const QString &reason);

} // namespace RequestLog
