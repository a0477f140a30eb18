#include "catalogue/PublicCatalogueMapping.h"

#include <QJsonArray>
#include <QRegularExpression>
#include <QVersionNumber>

namespace {

struct Release
{
    const char *name;
    const char *version;
};

constexpr Release releases[] = {
    {"cheetah", "10.0"},       {"puma", "10.1"},         {"jaguar", "10.2"},       {"panther", "10.3"},
    {"tiger", "10.4"},         {"leopard", "10.5"},      {"snow_leopard", "10.6"}, {"lion", "10.7"},
    {"mountain_lion", "10.8"}, {"mavericks", "10.9"},    {"yosemite", "10.10"},    {"el_capitan", "10.11"},
    {"sierra", "10.12"},       {"high_sierra", "10.13"}, {"mojave", "10.14"},      {"catalina", "10.15"},
    {"big_sur", "11.0"},       {"monterey", "12.0"},     {"ventura", "13.0"},      {"sonoma", "14.0"},
    {"sequoia", "15.0"},       {"tahoe", "26.0"},
};

QString versionOfRelease(QString name)
{
    name = name.trimmed();
    if (name.startsWith(u':'))
        name.remove(0, 1);
    for (const Release &release : releases) {
        if (name == QLatin1StringView(release.name))
            return QString::fromLatin1(release.version);
    }
    // A plain number ("10.15") stands for itself.
    static const QRegularExpression number(QStringLiteral("^\"?(\\d+(\\.\\d+)*)\"?$"));
    const auto match = number.match(name);
    return match.hasMatch() ? match.captured(1) : QString();
}

const QStringList prereleaseMarks = {QStringLiteral("beta"),   QStringLiteral("nightly"), QStringLiteral("dev"),
                                     QStringLiteral("alpha"),  QStringLiteral("preview"), QStringLiteral("canary"),
                                     QStringLiteral("insider")};

bool isPrerelease(const QString &token)
{
    const qsizetype at = token.indexOf(u'@');
    if (at < 0)
        return false;
    const QString variant = token.mid(at + 1).toLower();
    return std::any_of(prereleaseMarks.begin(), prereleaseMarks.end(),
                       [&](const QString &mark) { return variant.contains(mark); });
}

QStringList texts(const QJsonValue &value)
{
    QStringList result;
    for (const QJsonValue &item : value.toArray()) {
        if (item.isString() && !item.toString().isEmpty())
            result.append(item.toString());
    }
    return result;
}

void insertText(QJsonObject &record, QLatin1StringView key, const QString &value)
{
    if (!value.isEmpty())
        record.insert(key, value);
}

// The link and hash of the download; where only the architecture is left open, the Apple-silicon one.
std::pair<QString, QString> download(const QJsonObject &source)
{
    if (source.value(QLatin1StringView("url_resolved")).toBool())
        return {source.value(QLatin1StringView("url")).toString(),
                source.value(QLatin1StringView("sha256")).toString()};
    const QJsonObject byArch = source.value(QLatin1StringView("url_by_arch")).toObject();
    const QJsonObject hashByArch = source.value(QLatin1StringView("sha256_by_arch")).toObject();
    for (const QLatin1StringView arch : {QLatin1StringView("arm"), QLatin1StringView("intel")}) {
        if (byArch.contains(arch))
            return {byArch.value(arch).toString(), hashByArch.value(arch).toString()};
    }
    return {};
}

} // namespace

namespace PublicCatalogueMapping {

QString minimumOsVersion(const QJsonValue &minMacos)
{
    if (minMacos.isArray()) {
        QString oldest;
        for (const QJsonValue &name : minMacos.toArray()) {
            const QString version = versionOfRelease(name.toString());
            if (!version.isEmpty() &&
                (oldest.isEmpty() || QVersionNumber::fromString(version) < QVersionNumber::fromString(oldest)))
                oldest = version;
        }
        return oldest;
    }
    const QString text = minMacos.toString().trimmed();
    if (text.startsWith(QLatin1StringView(">=")))
        return versionOfRelease(text.mid(2));
    if (text.startsWith(u'='))
        return versionOfRelease(text.mid(text.startsWith(QLatin1StringView("==")) ? 2 : 1));
    if (text.startsWith(u'>') || text.startsWith(u'<'))
        return {};
    return versionOfRelease(text);
}

QJsonObject map(const QJsonObject &source)
{
    QJsonObject record;
    const QString token = source.value(QLatin1StringView("token")).toString();
    insertText(record, QLatin1StringView("name"), source.value(QLatin1StringView("name")).toString());
    // "latest" is no version at all: without one the program never calls the app outdated.
    if (!source.value(QLatin1StringView("version_latest")).toBool())
        insertText(record, QLatin1StringView("current_version"),
                   source.value(QLatin1StringView("version_display")).toString());
    const auto [link, hash] = download(source);
    insertText(record, QLatin1StringView("link"), link);
    insertText(record, QLatin1StringView("filehash"), hash.toLower());
    if (link.isEmpty())
        record.insert(QLatin1StringView("vld_install_from_link"), QStringLiteral("2"));
    insertText(record, QLatin1StringView("min_os"), minimumOsVersion(source.value(QLatin1StringView("min_macos"))));
    const QString description = source.value(QLatin1StringView("desc")).toString();
    insertText(record, QLatin1StringView("shortdescr"), description);
    insertText(record, QLatin1StringView("descr"), description);
    insertText(record, QLatin1StringView("homepage"), source.value(QLatin1StringView("homepage")).toString());
    if (isPrerelease(token))
        record.insert(QLatin1StringView("stability"), QStringLiteral("beta"));

    const QStringList bundleNames = texts(source.value(QLatin1StringView("artifact_names")));
    QStringList displayNames = texts(source.value(QLatin1StringView("names")));
    for (const QString &bundleName : bundleNames) {
        const qsizetype dot = bundleName.lastIndexOf(u'.');
        const QString bare = dot > 0 ? bundleName.left(dot) : bundleName;
        if (!displayNames.contains(bare))
            displayNames.append(bare);
    }
    record.insert(QLatin1StringView("bundle_ids"),
                  QJsonArray::fromStringList(texts(source.value(QLatin1StringView("bundle_ids")))));
    record.insert(QLatin1StringView("bundle_names"), QJsonArray::fromStringList(bundleNames));
    record.insert(QLatin1StringView("display_names"), QJsonArray::fromStringList(displayNames));
    return record;
}

} // namespace PublicCatalogueMapping
