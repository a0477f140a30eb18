#pragma once

#include <QByteArray>

namespace Zlib {

// One zlib stream (with its header), as the matching reply is sent.
QByteArray compress(const QByteArray &data);

} // namespace Zlib
