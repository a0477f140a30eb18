#include "wire/PngIcon.h"

#include <QtEndian>

#include <zlib.h>

namespace {

void appendChunk(QByteArray &png, const char *type, const QByteArray &data)
{
    QByteArray length(4, Qt::Uninitialized);
    qToBigEndian(quint32(data.size()), length.data());
    const QByteArray typed = QByteArray(type, 4) + data;
    QByteArray crc(4, Qt::Uninitialized);
    qToBigEndian(quint32(crc32(0, reinterpret_cast<const Bytef *>(typed.constData()), uInt(typed.size()))), crc.data());
    png += length + typed + crc;
}

} // namespace

namespace PngIcon {

QByteArray make(int size, quint8 red, quint8 green, quint8 blue)
{
    QByteArray header(13, 0);
    qToBigEndian(quint32(size), header.data());
    qToBigEndian(quint32(size), header.data() + 4);
    header[8] = 8; // bits per channel
    header[9] = 2; // RGB
    QByteArray pixels;
    const int frame = std::max(1, size / 16);
    for (int y = 0; y < size; ++y) {
        pixels.append('\0'); // no filter
        for (int x = 0; x < size; ++x) {
            const bool edge = x < frame || y < frame || x >= size - frame || y >= size - frame;
            for (const quint8 channel : {red, green, blue})
                pixels.append(char(edge ? channel / 2 : channel));
        }
    }
    uLongf packedSize = compressBound(uLong(pixels.size()));
    QByteArray packed(qsizetype(packedSize), Qt::Uninitialized);
    compress(reinterpret_cast<Bytef *>(packed.data()), &packedSize, reinterpret_cast<const Bytef *>(pixels.constData()),
             uLong(pixels.size()));
    packed.truncate(qsizetype(packedSize));
    QByteArray png("\x89PNG\r\n\x1a\n", 8);
    appendChunk(png, "IHDR", header);
    appendChunk(png, "IDAT", packed);
    appendChunk(png, "IEND", {});
    return png;
}

} // namespace PngIcon
