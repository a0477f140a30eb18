#pragma once

// The site's pages: plain HTML with every inserted text escaped.

#include <QString>

namespace Html {

inline constexpr const char *mime = "text/html; charset=utf-8";

QString escape(const QString &text);
QString page(const QString &title, const QString &bodyHtml);
QString paragraph(const QString &text);
QString link(const QString &href, const QString &text);

} // namespace Html
