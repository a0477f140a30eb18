#include "install/PbzxPayload.h"

#include <QFile>
#include <QSaveFile>
#include <QtEndian>

#include <lzma.h>

namespace {

constexpr char kMagic[] = "pbzx";
const QByteArray kXzMagic("\xFD"
                          "7zXZ",
                          5);
// A chunk's data is at most the chunk size (16 MB in practice); anything far larger is a damaged payload.
constexpr quint64 kLargestChunk = quint64(64) << 20;

bool readBigEndian(QFile &file, quint64 &value)
{
    uchar bytes[8];
    if (file.read(reinterpret_cast<char *>(bytes), 8) != 8) {
        return false;
    }
    value = qFromBigEndian<quint64>(bytes);
    return true;
}

// The cpio archive being written, which stops at its bound.
struct Output
{
    QSaveFile &file;
    qint64 maxBytes;
    bool tooLarge = false;

    bool write(const char *data, qint64 size)
    {
        tooLarge = file.size() + size > maxBytes;
        return !tooLarge && file.write(data, size) == size;
    }
};

bool inflateChunk(const QByteArray &chunk, Output &out)
{
    lzma_stream stream = LZMA_STREAM_INIT;
    if (lzma_stream_decoder(&stream, UINT64_MAX, 0) != LZMA_OK) {
        return false;
    }
    stream.next_in = reinterpret_cast<const uint8_t *>(chunk.constData());
    stream.avail_in = size_t(chunk.size());
    uint8_t buffer[1 << 16];
    lzma_ret status = LZMA_OK;
    while (status == LZMA_OK) {
        stream.next_out = buffer;
        stream.avail_out = sizeof buffer;
        status = lzma_code(&stream, LZMA_FINISH);
        const qint64 produced = qint64(sizeof buffer - stream.avail_out);
        if ((status == LZMA_OK || status == LZMA_STREAM_END) &&
            !out.write(reinterpret_cast<const char *>(buffer), produced)) {
            status = LZMA_PROG_ERROR;
        }
    }
    lzma_end(&stream);
    return status == LZMA_STREAM_END;
}

} // namespace

namespace PbzxPayload {

bool isPbzx(const QString &payload)
{
    QFile file(payload);
    return file.open(QIODevice::ReadOnly) && file.read(4) == kMagic;
}

Decoded decode(const QString &payload, const QString &cpioFile, qint64 maxBytes)
{
    QFile in(payload);
    QSaveFile file(cpioFile);
    Output out{file, maxBytes};
    quint64 chunkSize = 0;
    if (!in.open(QIODevice::ReadOnly) || in.read(4) != kMagic || !readBigEndian(in, chunkSize) ||
        !file.open(QIODevice::WriteOnly)) {
        return Decoded::Damaged;
    }
    while (!in.atEnd()) {
        quint64 flags = 0;
        quint64 length = 0;
        if (!readBigEndian(in, flags) || !readBigEndian(in, length) || length > kLargestChunk) {
            return Decoded::Damaged;
        }
        const QByteArray chunk = in.read(qint64(length));
        if (quint64(chunk.size()) != length) {
            return Decoded::Damaged;
        }
        const bool written =
            chunk.startsWith(kXzMagic) ? inflateChunk(chunk, out) : out.write(chunk.constData(), chunk.size());
        if (!written) {
            return out.tooLarge ? Decoded::TooLarge : Decoded::Damaged;
        }
    }
    return file.commit() ? Decoded::Done : Decoded::Damaged;
}

} // namespace PbzxPayload
