#include "wire/PathSegments.h"

#include "wire/FormBody.h"

namespace PathSegments {

std::optional<QStringList> split(const std::string &target)
{
    QByteArray path = QByteArray::fromStdString(target);
    const qsizetype query = path.indexOf('?');
    if (query >= 0)
        path.truncate(query);
    QStringList segments;
    const QList<QByteArray> raw = path.split('/');
    for (qsizetype i = 1; i < raw.size(); ++i) {
        const auto segment = Percent::decode(raw.at(i), false);
        if (!segment)
            return std::nullopt;
        segments.append(*segment);
    }
    return segments;
}

std::optional<QHash<QString, QString>> pairs(const QStringList &segments, qsizetype from, const QString &restKey)
{
    QHash<QString, QString> result;
    for (qsizetype i = from; i < segments.size(); i += 2) {
        if (i + 1 >= segments.size())
            return std::nullopt;
        if (!restKey.isEmpty() && segments.at(i) == restKey) {
            result.insert(restKey, segments.mid(i + 1).join(u'/'));
            break;
        }
        result.insert(segments.at(i), segments.at(i + 1));
    }
    return result;
}

} // namespace PathSegments
