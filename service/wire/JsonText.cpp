#include "wire/JsonText.h"

namespace JsonText {

void appendQuoted(QByteArray &out, const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    out.append('"');
    // Most texts need no escapes and go in as one piece.
    qsizetype plainFrom = 0;
    for (qsizetype i = 0; i < utf8.size(); ++i) {
        const auto c = static_cast<unsigned char>(utf8[i]);
        if (c >= 0x20 && c != '"' && c != '\\')
            continue;
        out.append(utf8.constData() + plainFrom, i - plainFrom);
        plainFrom = i + 1;
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
            out.append("\\u00").append(QByteArray::number(c, 16).rightJustified(2, '0'));
        }
    }
    out.append(utf8.constData() + plainFrom, utf8.size() - plainFrom);
    out.append('"');
}

QByteArray quoted(const QString &text)
{
    QByteArray out;
    appendQuoted(out, text);
    return out;
}

} // namespace JsonText
