#pragma once

#include <QByteArray>
#include <QString>

namespace JsonText {

// Appends the text as a JSON string literal, quotes included.
void appendQuoted(QByteArray &out, const QString &text);
QByteArray quoted(const QString &text);

} // namespace JsonText
