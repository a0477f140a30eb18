#include "wire/JsonText.h"

namespace JsonText {

QByteArray quoted(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    QByteArray out;
    out.reserve(utf8.size() + 2);
    out.append('"');
    for (const char c : utf8) {
        switch (c) {
        case '"':
            out.append("\\\"");
            break;
        case '\\':
            out.append("\\\\");
            break;
        case '\n':
            out.append("\\n");
            break;
        case '\r':
            out.append("\\r");
            break;
        case '\t':
            out.append("\\t");
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20)
                out.append("\\u00").append(
                    QByteArray::number(static_cast<unsigned char>(c), 16).rightJustified(2, '0'));
            else
                out.append(c);
        }
    }
    out.append('"');
    return out;
}

} // namespace JsonText
