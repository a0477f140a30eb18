#pragma once

// zlib streams (with their zlib header) to and from bytes: the matching reply comes compressed.
// Every operation answers nothing (std::nullopt) when zlib fails or the memory cannot be had.

#include <QByteArray>
#include <QString>

#include <optional>

class RAZipper
{
public:
    // A matching reply of the whole catalogue stays well below this; a reply that inflates past it is a bomb.
    static constexpr qint64 kMaxDecompressedBytes = qint64(256) * 1024 * 1024;

    // The output buffer starts at twice the stream's length and doubles while zlib finds it too small, up to
    // maxBytes: a stream that inflates to more gives nothing.
    static std::optional<QByteArray> dataForCompressedData(const QByteArray &data,
                                                           qint64 maxBytes = kMaxDecompressedBytes);
    // The same, read as UTF-8.
    static std::optional<QString> stringForCompressedData(const QByteArray &data);
    static std::optional<QByteArray> compressedDataForData(const QByteArray &data);
    // The text's UTF-8, compressed.
    static std::optional<QByteArray> compressedDataForString(const QString &text);
};
