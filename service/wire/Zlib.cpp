#include "wire/Zlib.h"

#include <zlib.h>

namespace Zlib {

QByteArray compress(const QByteArray &data)
{
    uLongf length = compressBound(uLong(data.size()));
    QByteArray out(qsizetype(length), Qt::Uninitialized);
    // Level 1: the replies are mostly short texts and the time matters more than the last few bytes.
    if (compress2(reinterpret_cast<Bytef *>(out.data()), &length, reinterpret_cast<const Bytef *>(data.constData()),
                  uLong(data.size()), 1) != Z_OK)
        return {};
    out.truncate(qsizetype(length));
    return out;
}

} // namespace Zlib
