#pragma once

#include <QByteArray>
#include <QString>

namespace JsonText {

// The text as a JSON string literal, quotes included.
QByteArray quoted(const QString &text);

} // namespace JsonText
