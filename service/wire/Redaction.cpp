#include "wire/Redaction.h"

#include <QStringList>

namespace {

struct SecretPath
{
    const char *prefix;     // the path's first segments
    QStringList secretKeys; // keys whose value is hidden
    const char *restKey;    // a key whose value runs to the end of the path
};

const SecretPath secretPaths[] = {
    {"/vld6member/jlogincheck2/", {QStringLiteral("u"), QStringLiteral("p")}, nullptr},
    {"/vld6member/jlogincheckcookie/", {QStringLiteral("u"), QStringLiteral("p")}, nullptr},
    {"/vld6member/signup/", {QStringLiteral("p")}, "utmz"},
};

const QString hidden = QStringLiteral("***");

} // namespace

namespace Redaction {

QString target(const std::string &rawTarget)
{
    const QString text = QString::fromUtf8(rawTarget.data(), qsizetype(rawTarget.size()));
    for (const SecretPath &path : secretPaths) {
        const QString prefix = QString::fromLatin1(path.prefix);
        if (!text.startsWith(prefix))
            continue;
        QStringList segments = text.mid(prefix.size()).split(u'/');
        for (qsizetype i = 0; i + 1 < segments.size(); i += 2) {
            if (path.restKey && segments.at(i) == QLatin1StringView(path.restKey)) {
                segments = segments.mid(0, i + 1) << hidden;
                break;
            }
            if (path.secretKeys.contains(segments.at(i)))
                segments[i + 1] = hidden;
        }
        return prefix + segments.join(u'/');
    }
    return text;
}

} // namespace Redaction
