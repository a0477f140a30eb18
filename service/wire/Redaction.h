#pragma once

// Request targets as they may appear in a log line: passwords, their MD5s, cookie values and tokens become
// "***", however the path spells its segments (percent-encoded keys and route names are read as decoded).

#include <QString>

namespace Redaction {

QString target(const std::string &rawTarget);

} // namespace Redaction
