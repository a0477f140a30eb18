#pragma once

// The head of an HTTP/1.1 request (request line and header fields), read strictly: anything a front proxy
// could read another way (a doubtful Content-Length, a Content-Length beside a transfer coding, folded or
// malformed lines) is refused, since two readers must never see two different requests in the same bytes.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

// Why a request is refused: the status to answer and a one-line reason. The connection is closed after it.
struct Refusal
{
    int status;
    const char *reason;
};

struct HeadLimits
{
    size_t maxLineBytes = 8 * 1024;
    size_t maxFields = 100;
};

class RequestHead
{
public:
    enum class Coding { Identity, Gzip, Zlib };

    std::string method;
    std::string target;
    std::string version;
    std::vector<std::pair<std::string, std::string>> fields;
    uint64_t contentLength = 0; // meaningful when not chunked
    bool chunked = false;
    Coding coding = Coding::Identity;
    bool expectsContinue = false;

    // The head's text up to (not including) its empty line, lines ending in CRLF or LF.
    static std::variant<RequestHead, Refusal> parse(std::string_view text, const HeadLimits &limits);

    // The router refuses a target with more than one "?", though a query may hold a link that has its own. It gets
    // the target with every later "?" escaped, and the target as sent in this field (never taken from a client).
    static constexpr std::string_view sentTargetField = "Velmora-Sent-Target";

    // The same request framed by a Content-Length of the decoded body alone: no transfer or content coding and
    // no Expect, so what reads it next has one way to read it.
    std::string forwarded(size_t bodySize) const;
};
