#include "http/ConnectionWorker.h"

#include "http/RequestStream.h"
#include "wire/Zlib.h"

#include <atomic>
#include <malloc.h>

namespace ConnectionWorker {

namespace {

// A request this large (a matching request of some thousands of apps) leaves megabytes of freed form and reply in
// the heap, which glibc keeps for the next one: with every worker on such a request at once, that peak would stay
// resident for good. It is given back when the last large request in flight ends; a trim after each one would
// cost more than the request while others still hold theirs. Small requests, most of the traffic, never trim.
constexpr size_t trimAfterBytes = 256 * 1024;
std::atomic<int> largeInFlight{0};

class LargeRequest
{
public:
    explicit LargeRequest(size_t bodyBytes) : m_large(bodyBytes >= trimAfterBytes)
    {
        if (m_large)
            ++largeInFlight;
    }
    ~LargeRequest()
    {
        if (m_large && --largeInFlight == 0)
            malloc_trim(0);
    }
    LargeRequest(const LargeRequest &) = delete;
    LargeRequest &operator=(const LargeRequest &) = delete;

private:
    const bool m_large;
};

} // namespace

void serve(RequestRouter &router, FrontConnection &connection, const ServerLimits &limits)
{
    // Decoded here rather than by the front, whose one thread would stall on a large body. No body, nothing to
    // decode.
    if (connection.head.coding != RequestHead::Coding::Identity && !connection.body.empty()) {
        auto decoded = Zlib::inflate(connection.body,
                                     connection.head.coding == RequestHead::Coding::Gzip ? Zlib::Wrapper::Gzip
                                                                                         : Zlib::Wrapper::Zlib,
                                     limits.maxBodyBytes);
        if (const auto *error = std::get_if<Zlib::InflateError>(&decoded))
            return connection.refuse(*error == Zlib::InflateError::TooLarge
                                         ? Refusal{413, "request body too large"}
                                         : Refusal{400, "compressed request body is malformed or cut short"});
        connection.body = std::move(std::get<std::string>(decoded));
    }
    // Ends after the body and the reply are freed.
    const LargeRequest large(connection.body.size());
    RequestStream stream(connection, connection.head.forwarded(connection.body.size()), limits.writeTimeout);
    const bool last = connection.served + 1 >= limits.keepAliveMax || connection.clientClosed;
    bool clientCloses = false;
    const bool written = router.answer(stream, last, clientCloses) && stream.flush();
    ++connection.served;
    connection.head = RequestHead();
    connection.chunked = ChunkedBody();
    std::string().swap(connection.body);
    if (!written)
        connection.enter(FrontConnection::Phase::Closed);
    else if (last || clientCloses)
        connection.finish();
    else
        connection.enter(FrontConnection::Phase::Idle);
}

} // namespace ConnectionWorker
