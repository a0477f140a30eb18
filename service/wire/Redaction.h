#pragma once

// Request targets as they may appear in a log line: passwords, their MD5s, cookie values and tokens become
// "***".

#include <QString>

namespace Redaction {

QString target(const std::string &rawTarget);

} // namespace Redaction
