#pragma once

#include <QByteArray>

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace Zlib {

enum class Wrapper { Gzip, Zlib };
enum class InflateError { Malformed, TooLarge };

// A whole compressed request body: exactly one stream that ends with its trailer and has nothing after it.
// Anything less (cut short, trailer missing, a bad checksum) is Malformed; more than limit bytes inflated is
// TooLarge.
std::variant<std::string, InflateError> inflate(std::string_view data, Wrapper wrapper, size_t limit);

} // namespace Zlib
