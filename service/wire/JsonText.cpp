#include "wire/JsonText.h"

#include <QVarLengthArray>

#include <algorithm>

namespace JsonText {

namespace {

void appendQuotedUtf8(QByteArray &out, QByteArrayView utf8)
{
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

} // namespace

void appendQuoted(QByteArray &out, const QString &text)
{
    // Matching replies quote a thousand short ASCII texts each: those skip the UTF-8 copy.
    QVarLengthArray<char, 256> ascii(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        if (c >= 0x80)
            return appendQuotedUtf8(out, text.toUtf8());
        ascii[i] = char(c);
    }
    appendQuotedUtf8(out, QByteArrayView(ascii.constData(), ascii.size()));
}

void appendQuotedBytes(QByteArray &out, QByteArrayView utf8)
{
    if (std::all_of(utf8.begin(), utf8.end(), [](char c) { return uchar(c) < 0x80; }))
        return appendQuotedUtf8(out, utf8);
    appendQuoted(out, QString::fromUtf8(utf8));
}

QByteArray quoted(const QString &text)
{
    QByteArray out;
    appendQuoted(out, text);
    return out;
}

} // namespace JsonText
