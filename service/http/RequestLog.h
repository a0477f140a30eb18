#pragma once

// One line on stderr per request answered: time, client, method, target with its secrets hidden, status, bytes
// sent and, for a refusal, its reason. A reason is the reply's bytes: a text shows as text, anything else (a
// compressed or binary reply) escaped byte by byte, so the log never carries raw bytes.

#include <QString>

#include <string>
#include <string_view>

namespace RequestLog {

void write(const std::string &client, const std::string &method, const std::string &target, int status,
           const std::string &bytes, std::string_view reason);

} // namespace RequestLog
