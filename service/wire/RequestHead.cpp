#include "wire/RequestHead.h"

#include <algorithm>
#include <cstring>

namespace {

bool isTokenChar(unsigned char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           (c != 0 && std::strchr("!#$%&'*+-.^_`|~", c) != nullptr);
}

bool isToken(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), isTokenChar);
}

// Visible characters, spaces, tabs and bytes of other encodings; no control characters.
bool isValueText(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return c == '\t' || (c >= 0x20 && c != 0x7f); });
}

char lowered(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

bool sameName(std::string_view a, std::string_view b)
{
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lowered(x) == lowered(y); });
}

std::string_view trimmed(std::string_view text)
{
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// The elements of a comma-separated field value, trimmed; empty elements are left out.
std::vector<std::string> elements(std::string_view value)
{
    std::vector<std::string> result;
    for (size_t start = 0; start <= value.size();) {
        const size_t comma = std::min(value.find(',', start), value.size());
        const std::string_view element = trimmed(value.substr(start, comma - start));
        if (!element.empty()) {
            std::string text(element);
            std::transform(text.begin(), text.end(), text.begin(), lowered);
            result.push_back(std::move(text));
        }
        start = comma + 1;
    }
    return result;
}

// Digits only, no sign, no spaces; 18 digits at most, so it cannot overflow.
std::optional<uint64_t> decimal(std::string_view text)
{
    if (text.empty() || text.size() > 18 ||
        !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    uint64_t value = 0;
    for (const char c : text)
        value = value * 10 + uint64_t(c - '0');
    return value;
}

std::vector<std::string_view> lines(std::string_view text)
{
    std::vector<std::string_view> result;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find('\n', start), text.size());
        std::string_view line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        result.push_back(line);
        start = end + 1;
    }
    while (!result.empty() && result.back().empty())
        result.pop_back();
    return result;
}

std::optional<Refusal> parseRequestLine(std::string_view line, RequestHead &head)
{
    const size_t first = line.find(' ');
    const size_t second = first == std::string_view::npos ? first : line.find(' ', first + 1);
    if (second == std::string_view::npos || line.find(' ', second + 1) != std::string_view::npos)
        return Refusal{400, "malformed request line"};
    head.method = line.substr(0, first);
    head.target = line.substr(first + 1, second - first - 1);
    head.version = line.substr(second + 1);
    if (!isToken(head.method))
        return Refusal{400, "malformed request method"};
    if (head.target.empty() ||
        !std::all_of(head.target.begin(), head.target.end(), [](unsigned char c) { return c > 0x20 && c < 0x7f; }))
        return Refusal{400, "malformed request target"};
    if (head.version == "HTTP/1.1" || head.version == "HTTP/1.0")
        return std::nullopt;
    if (head.version.size() == 8 && head.version.starts_with("HTTP/") && head.version[6] == '.')
        return Refusal{505, "HTTP version not supported"};
    return Refusal{400, "malformed HTTP version"};
}

// How the body is framed and coded, from the fields that say so.
std::optional<Refusal> readFraming(RequestHead &head)
{
    int hosts = 0;
    std::optional<uint64_t> length;
    bool transferField = false;
    std::vector<std::string> transfer, content;
    for (const auto &[name, value] : head.fields) {
        if (sameName(name, "host")) {
            ++hosts;
        } else if (sameName(name, "content-length")) {
            const std::vector<std::string> values = elements(value);
            if (values.empty())
                return Refusal{400, "invalid Content-Length"};
            for (const std::string &text : values) {
                const auto number = decimal(text);
                if (!number)
                    return Refusal{400, "invalid Content-Length"};
                if (length && *length != *number)
                    return Refusal{400, "conflicting Content-Length fields"};
                length = number;
            }
        } else if (sameName(name, "transfer-encoding")) {
            transferField = true;
            for (std::string &coding : elements(value))
                transfer.push_back(std::move(coding));
        } else if (sameName(name, "content-encoding")) {
            for (std::string &coding : elements(value))
                if (coding != "identity")
                    content.push_back(std::move(coding));
        } else if (sameName(name, "expect")) {
            if (!sameName(trimmed(value), "100-continue"))
                return Refusal{417, "unsupported expectation"};
            head.expectsContinue = head.version == "HTTP/1.1";
        }
    }
    if (hosts > 1 || (hosts == 0 && head.version == "HTTP/1.1"))
        return Refusal{400, "a request needs one Host field"};
    if (transferField) {
        if (head.version != "HTTP/1.1")
            return Refusal{400, "transfer coding in an HTTP/1.0 request"};
        if (length)
            return Refusal{400, "both Content-Length and Transfer-Encoding"};
        if (transfer.empty() || transfer.back() != "chunked")
            return Refusal{400, "body length unknown: chunked is not the last transfer coding"};
        if (transfer.size() > 1)
            return Refusal{501, "transfer coding not supported"};
        head.chunked = true;
    }
    head.contentLength = length.value_or(0);
    if (content.size() > 1)
        return Refusal{415, "more than one content coding"};
    if (!content.empty()) {
        if (content.front() == "gzip" || content.front() == "x-gzip")
            head.coding = RequestHead::Coding::Gzip;
        else if (content.front() == "deflate")
            head.coding = RequestHead::Coding::Zlib;
        else
            return Refusal{415, "content coding not supported"};
    }
    return std::nullopt;
}

} // namespace

std::variant<RequestHead, Refusal> RequestHead::parse(std::string_view text, const HeadLimits &limits)
{
    if (text.find('\0') != std::string_view::npos)
        return Refusal{400, "NUL in the request head"};
    const std::vector<std::string_view> all = lines(text);
    if (all.empty())
        return Refusal{400, "empty request"};
    if (all.size() - 1 > limits.maxFields)
        return Refusal{431, "too many header fields"};
    RequestHead head;
    for (size_t i = 0; i < all.size(); ++i) {
        const std::string_view line = all[i];
        if (line.size() > limits.maxLineBytes)
            return i == 0 ? Refusal{414, "request line too long"} : Refusal{431, "header field too long"};
        if (line.find('\r') != std::string_view::npos)
            return Refusal{400, "bare CR in the request head"};
        if (i == 0) {
            if (const auto refusal = parseRequestLine(line, head))
                return *refusal;
            continue;
        }
        if (line.front() == ' ' || line.front() == '\t')
            return Refusal{400, "folded header line"};
        const size_t colon = line.find(':');
        const std::string_view name = line.substr(0, colon);
        const std::string_view value =
            colon == std::string_view::npos ? std::string_view() : trimmed(line.substr(colon + 1));
        if (colon == std::string_view::npos || !isToken(name))
            return Refusal{400, "malformed header field"};
        if (!isValueText(value))
            return Refusal{400, "control character in a header field"};
        head.fields.emplace_back(name, value);
    }
    if (const auto refusal = readFraming(head))
        return *refusal;
    return head;
}

std::string RequestHead::forwarded(size_t bodySize) const
{
    std::string routed = target;
    if (const size_t query = routed.find('?'); query != std::string::npos) {
        for (size_t at = routed.find('?', query + 1); at != std::string::npos; at = routed.find('?', at + 3))
            routed.replace(at, 1, "%3F");
    }
    std::string text = method + ' ' + routed + ' ' + version + "\r\n";
    for (const auto &[name, value] : fields) {
        if (sameName(name, "content-length") || sameName(name, "transfer-encoding") ||
            sameName(name, "content-encoding") || sameName(name, "expect") || sameName(name, sentTargetField))
            continue;
        text.append(name).append(": ").append(value).append("\r\n");
    }
    if (routed != target) {
        // The router's library decodes escapes in header values: each "%" goes as "%25" to arrive as itself.
        text.append(sentTargetField).append(": ");
        for (const char c : target) {
            if (c == '%')
                text.append("%25");
            else
                text.push_back(c);
        }
        text.append("\r\n");
    }
    return text.append("Content-Length: ").append(std::to_string(bodySize)).append("\r\n\r\n");
}
