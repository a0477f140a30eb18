#include "cli/RecordLines.h"

QString recordLine(const QStringList &fields)
{
    QStringList cleaned;
    cleaned.reserve(fields.size());
    for (QString field : fields) {
        if (field.isEmpty()) {
            field = QStringLiteral("-");
        }
        for (QChar &c : field) {
            if (c == QLatin1Char('\t') || c == QLatin1Char('\n') || c == QLatin1Char('\r')) {
                c = QLatin1Char(' ');
            }
        }
        cleaned.append(field);
    }
    return cleaned.join(QLatin1Char('\t'));
}
