#include "wire/Zlib.h"

#include <zlib.h>

namespace Zlib {

std::variant<std::string, InflateError> inflate(std::string_view data, Wrapper wrapper, size_t limit)
{
    z_stream stream{};
    if (inflateInit2(&stream, wrapper == Wrapper::Gzip ? 16 + MAX_WBITS : MAX_WBITS) != Z_OK)
        return InflateError::Malformed;
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(data.data()));
    stream.avail_in = uInt(data.size());
    std::string out;
    int rc = Z_OK;
    while (rc == Z_OK) {
        if (out.size() > limit)
            break;
        const size_t before = out.size();
        out.resize(before + 64 * 1024);
        stream.next_out = reinterpret_cast<Bytef *>(out.data() + before);
        stream.avail_out = 64 * 1024;
        rc = ::inflate(&stream, Z_NO_FLUSH);
        out.resize(out.size() - stream.avail_out);
    }
    const bool ended = rc == Z_STREAM_END && stream.avail_in == 0;
    inflateEnd(&stream);
    if (out.size() > limit)
        return InflateError::TooLarge;
    if (!ended)
        return InflateError::Malformed;
    return out;
}

} // namespace Zlib
