#include "platform/NativePath.h"

namespace NativePath {
namespace {

constexpr char16_t kEscapeBase = 0xDC00;

bool isEscape(QStringView path, qsizetype i)
{
    const char16_t c = path[i].unicode();
    return c >= kEscapeBase + 0x80 && c <= kEscapeBase + 0xFF && (i == 0 || !path[i - 1].isHighSurrogate());
}

// The length of the UTF-8 sequence at i, or 0 when none starts there.
qsizetype sequenceLength(QByteArrayView bytes, qsizetype i)
{
    const uchar lead = uchar(bytes[i]);
    const qsizetype length = lead < 0x80             ? 1
                             : (lead & 0xE0) == 0xC0 ? 2
                             : (lead & 0xF0) == 0xE0 ? 3
                             : (lead & 0xF8) == 0xF0 ? 4
                                                     : 0;
    return length > 0 && i + length <= bytes.size() && bytes.sliced(i, length).isValidUtf8() ? length : 0;
}

} // namespace

QString decode(const QByteArray &bytes)
{
    if (QByteArrayView(bytes).isValidUtf8()) {
        return QString::fromUtf8(bytes);
    }
    QString text;
    for (qsizetype i = 0; i < bytes.size();) {
        const qsizetype length = sequenceLength(bytes, i);
        if (length > 0) {
            text += QString::fromUtf8(bytes.constData() + i, length);
            i += length;
        } else {
            text += QChar(char16_t(kEscapeBase + uchar(bytes[i++])));
        }
    }
    return text;
}

QByteArray encode(const QString &path)
{
    QByteArray bytes;
    qsizetype run = 0; // start of the text not yet encoded
    for (qsizetype i = 0; i < path.size(); ++i) {
        if (isEscape(path, i)) {
            bytes += QStringView(path).sliced(run, i - run).toUtf8();
            bytes += char(path[i].unicode() - kEscapeBase);
            run = i + 1;
        }
    }
    return run == 0 ? path.toUtf8() : bytes + QStringView(path).sliced(run).toUtf8();
}

} // namespace NativePath
