#include "wire/ChunkedBody.h"

#include "wire/HexDigit.h"

#include <algorithm>

namespace {

constexpr size_t maxLineBytes = 8 * 1024;
constexpr size_t maxTrailerLines = 100;

// The chunk size at the start of a size line (extensions after ';' are dropped); nullopt when malformed.
std::optional<uint64_t> chunkSize(std::string_view line)
{
    const size_t digits = std::min(line.find_first_not_of("0123456789abcdefABCDEF"), line.size());
    if (digits == 0 || digits > 15)
        return std::nullopt;
    const std::string_view rest = line.substr(digits);
    const size_t extension = rest.find_first_not_of(" \t");
    if (extension != std::string_view::npos && rest[extension] != ';')
        return std::nullopt;
    uint64_t size = 0;
    for (size_t i = 0; i < digits; ++i)
        size = size * 16 + uint64_t(hexValue(line[i]));
    return size;
}

} // namespace

ChunkedBody::Step ChunkedBody::refuse(int status, const char *reason)
{
    m_refusal = {status, reason};
    return Step::Refused;
}

ChunkedBody::Step ChunkedBody::take(std::string &input, std::string &body, size_t maxBody)
{
    size_t used = 0;
    const auto erase = [&] { input.erase(0, used); };
    for (;;) {
        if (m_state == State::Data) {
            const size_t count = size_t(std::min<uint64_t>(m_left, input.size() - used));
            body.append(input, used, count);
            used += count;
            m_left -= count;
            if (m_left > 0) {
                erase();
                return Step::NeedMore;
            }
            m_state = State::DataEnd;
        }
        const size_t newline = input.find('\n', used);
        if (newline == std::string::npos) {
            erase();
            if (input.size() > maxLineBytes)
                return refuse(400, "chunk line too long");
            return Step::NeedMore;
        }
        std::string_view line(input.data() + used, newline - used);
        used = newline + 1;
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        if (line.size() > maxLineBytes)
            return refuse(400, "chunk line too long");
        switch (m_state) {
        case State::Size: {
            const auto size = chunkSize(line);
            if (!size)
                return refuse(400, "malformed chunk size");
            if (*size > maxBody - std::min(maxBody, body.size()))
                return refuse(413, "request body too large");
            m_left = *size;
            m_state = *size == 0 ? State::Trailer : State::Data;
            break;
        }
        case State::DataEnd:
            if (!line.empty())
                return refuse(400, "chunk data longer than its size");
            m_state = State::Size;
            break;
        case State::Trailer:
            if (line.empty()) {
                erase();
                return Step::Done;
            }
            if (++m_trailerLines > maxTrailerLines)
                return refuse(431, "too many trailer fields");
            break;
        case State::Data:
            break;
        }
    }
}
