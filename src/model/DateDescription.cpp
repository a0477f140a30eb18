#include "model/DateDescription.h"

namespace {
const QString kFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");
const QString kUtcSuffix = QStringLiteral(" +0000");
} // namespace

QString dateDescription(const QDateTime &date)
{
    return date.toUTC().toString(kFormat) + kUtcSuffix;
}

QString currentDateDescription()
{
    return dateDescription(QDateTime::currentDateTimeUtc());
}

std::optional<QDateTime> dateFromDescription(const QString &text)
{
    if (!text.endsWith(kUtcSuffix)) {
        return std::nullopt;
    }
    QDateTime date = QDateTime::fromString(text.chopped(kUtcSuffix.size()), kFormat);
    if (!date.isValid()) {
        return std::nullopt;
    }
    date.setTimeSpec(Qt::UTC);
    return date;
}
