#include "platform/RAZipper.h"

#include <new>

#include <zlib.h>

std::optional<QByteArray> RAZipper::dataForCompressedData(const QByteArray &data, qint64 maxBytes)
{
    // An empty stream would leave the buffer at nothing, doubling nothing for ever.
    if (data.isEmpty() || maxBytes <= 0) {
        return std::nullopt;
    }
    qint64 capacity = std::min<qint64>(qint64(data.size()) * 2, maxBytes);
    try {
        for (;;) {
            QByteArray out(qsizetype(capacity), Qt::Uninitialized);
            uLongf length = uLongf(capacity);
            const int rc = uncompress(reinterpret_cast<Bytef *>(out.data()), &length,
                                      reinterpret_cast<const Bytef *>(data.constData()), uLong(data.size()));
            if (rc == Z_OK) {
                out.truncate(qsizetype(length));
                return out;
            }
            if (rc != Z_BUF_ERROR || capacity >= maxBytes) {
                return std::nullopt;
            }
            capacity = std::min(capacity * 2, maxBytes);
        }
    } catch (const std::bad_alloc &) {
        return std::nullopt;
    }
}

std::optional<QString> RAZipper::stringForCompressedData(const QByteArray &data)
{
    const std::optional<QByteArray> bytes = dataForCompressedData(data);
    if (!bytes) {
        return std::nullopt;
    }
    return QString::fromUtf8(*bytes);
}

std::optional<QByteArray> RAZipper::compressedDataForData(const QByteArray &data)
{
    try {
        uLongf length = compressBound(uLong(data.size()));
        QByteArray out(qsizetype(length), Qt::Uninitialized);
        if (compress(reinterpret_cast<Bytef *>(out.data()), &length, reinterpret_cast<const Bytef *>(data.constData()),
                     uLong(data.size())) != Z_OK) {
            return std::nullopt;
        }
        out.truncate(qsizetype(length));
        return out;
    } catch (const std::bad_alloc &) {
        return std::nullopt;
    }
}

std::optional<QByteArray> RAZipper::compressedDataForString(const QString &text)
{
    return compressedDataForData(text.toUtf8());
}
