#pragma once

// A zlib stream joined from pieces, so a reply made mostly of the same texts again and again is not compressed
// anew each time: texts that repeat are compressed once into fragments (raw deflate ending on a byte boundary
// and not final, which is what lets deflate blocks follow each other), texts of one request go in as stored
// blocks, and the trailer's checksum is combined from the pieces' own. Any inflater reads the result as one stream.

#include <QByteArray>

#include <zlib.h>

class ZlibJoin
{
public:
    struct Fragment
    {
        QByteArray deflated;
        uLong adler = 1;
        qsizetype length = 0; // of the text
    };
    // Compresses text once, for any number of replies.
    static Fragment fragment(const QByteArray &text);

    // size: about how long the stream will be, so that it is allocated once.
    explicit ZlibJoin(qsizetype size = 0);
    // Text of this reply only, written straight into the stream's pending text and kept as it is.
    QByteArray &text() { return m_pending; }
    void append(const Fragment &fragment);
    // The whole stream: header, pieces, the final block and the checksum.
    QByteArray finish();

private:
    void storePending();

    QByteArray m_out;
    QByteArray m_pending;
    uLong m_adler;
};
