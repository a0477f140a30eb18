#include "wire/Redaction.h"

#include "wire/PathSegments.h"

#include <QStringList>

namespace {

struct SecretPath
{
    const char *route;      // the path's first two segments, decoded, as the handler takes them
    QStringList secretKeys; // keys whose value is hidden
    const char *restKey;    // a key whose value runs to the end of the path
};

const SecretPath secretPaths[] = {
    {"vld6member/jlogincheck2", {QStringLiteral("u"), QStringLiteral("p")}, nullptr},
    {"vld6member/jlogincheckcookie", {QStringLiteral("u"), QStringLiteral("p")}, nullptr},
    {"vld6member/signup", {QStringLiteral("p")}, "utmz"},
};

const QByteArray hidden = "***";

} // namespace

namespace Redaction {

QString target(const std::string &rawTarget)
{
    const QByteArray raw = QByteArray::fromStdString(rawTarget);
    const qsizetype query = raw.indexOf('?');
    const QByteArray path = query < 0 ? raw : raw.left(query);
    // Paths are routed on their decoded form, so "%73ignup" or an encoded "/" reaches the same handler.
    const QString routed = QString::fromUtf8(QByteArray::fromPercentEncoding(path));
    for (const SecretPath &secret : secretPaths) {
        const QString route = QLatin1StringView(secret.route);
        if (!routed.startsWith(u'/' + route + u'/'))
            continue;
        const auto decoded = PathSegments::split(path.toStdString());
        QList<QByteArray> segments = path.split('/').mid(1);
        // A path the handler reads apart differently from its route is refused there; hide all of it here.
        if (!decoded || decoded->mid(0, 2).join(u'/') != route)
            return u'/' + route + QStringLiteral("/***");
        for (qsizetype i = 2; i + 1 < segments.size(); i += 2) {
            if (secret.restKey && decoded->at(i) == QLatin1StringView(secret.restKey)) {
                segments = segments.mid(0, i + 1) << hidden;
                break;
            }
            if (secret.secretKeys.contains(decoded->at(i)))
                segments[i + 1] = hidden;
        }
        return QString::fromUtf8('/' + segments.join('/') + (query < 0 ? QByteArray() : "?" + hidden));
    }
    return QString::fromUtf8(raw);
}

} // namespace Redaction
