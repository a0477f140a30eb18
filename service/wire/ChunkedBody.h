#pragma once

// Reads a chunked request body as it arrives, in whatever pieces, and refuses one that is malformed or would
// grow past its limit. Chunk extensions and trailer fields are read over and dropped.

#include "wire/RequestHead.h"

#include <string>

class ChunkedBody
{
public:
    enum class Step { NeedMore, Done, Refused };

    // Takes what it can from the front of input (erasing it) and appends the chunks' data to body.
    Step take(std::string &input, std::string &body, size_t maxBody);
    // Why take() refused.
    Refusal refusal() const { return m_refusal; }

private:
    enum class State { Size, Data, DataEnd, Trailer };
    Step refuse(int status, const char *reason);

    State m_state = State::Size;
    uint64_t m_left = 0;
    size_t m_trailerLines = 0;
    Refusal m_refusal{400, ""};
};
