#include "wire/Html.h"

namespace Html {

QString escape(const QString &text)
{
    return text.toHtmlEscaped();
}

QString page(const QString &title, const QString &bodyHtml)
{
    return QStringLiteral("<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>%1</title></head>\n"
                          "<body><h1>%1</h1>\n%2\n</body></html>\n")
        .arg(escape(title), bodyHtml);
}

QString paragraph(const QString &text)
{
    return QStringLiteral("<p>%1</p>").arg(escape(text));
}

QString link(const QString &href, const QString &text)
{
    return QStringLiteral("<a href=\"%1\">%2</a>").arg(escape(href), escape(text));
}

} // namespace Html
