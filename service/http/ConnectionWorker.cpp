#include "http/ConnectionWorker.h"

#include "http/RequestStream.h"
#include "wire/Zlib.h"

namespace ConnectionWorker {

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
