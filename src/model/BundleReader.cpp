#include "model/BundleReader.h"

#include "model/PropertyList.h"

#include <QFileInfo>

BundleReader::BundleReader(const QString &bundlePath) : m_path(bundlePath) {}

const std::optional<QVariantMap> &BundleReader::load(const QString &relativePath, bool stringsFile)
{
    auto it = m_files.find(relativePath);
    if (it != m_files.end()) {
        return it->second;
    }
    const QString path = m_path + relativePath;
    PropertyList::ReadResult result =
        stringsFile ? PropertyList::readStringsFile(path) : PropertyList::readDictionaryFile(path);
    if (!result.problem.isEmpty()) {
        m_problems.append(result.problem);
    }
    return m_files.emplace(relativePath, std::move(result.dictionary)).first->second;
}

bool BundleReader::exists(const QString &relativePath)
{
    auto it = m_exists.find(relativePath);
    if (it == m_exists.end()) {
        it = m_exists.emplace(relativePath, QFileInfo::exists(m_path + relativePath)).first;
    }
    return it->second;
}

const std::optional<QVariantMap> &BundleReader::firstExisting(const QStringList &candidates, bool stringsFile)
{
    for (const QString &candidate : candidates) {
        if (m_files.count(candidate) || exists(candidate)) {
            return load(candidate, stringsFile && candidate.endsWith(QLatin1String(".strings")));
        }
    }
    // None exists: the last one is tried anyway, which yields no dictionary.
    return load(candidates.last(), false);
}

const std::optional<QVariantMap> &BundleReader::infoDictionary()
{
    static const QStringList candidates = {QStringLiteral("/Contents/Info.plist"),
                                           QStringLiteral("/Contents/version.plist"),
                                           QStringLiteral("/Contents/Info-macos.plist"), QStringLiteral("/Info.plist")};
    return firstExisting(candidates, false);
}

const std::optional<QVariantMap> &BundleReader::versionPlistDictionary()
{
    static const QStringList candidates = {QStringLiteral("/Contents/version.plist"),
                                           QStringLiteral("/Contents/Info-macos.plist"), QStringLiteral("/Info.plist")};
    return firstExisting(candidates, false);
}

const std::optional<QVariantMap> &BundleReader::infoPlistStringsDictionary()
{
    static const QStringList candidates = {QStringLiteral("/Contents/Resources/English.lproj/InfoPlist.strings"),
                                           QStringLiteral("/Contents/Info-macos.plist"), QStringLiteral("/Info.plist")};
    return firstExisting(candidates, true);
}

const std::optional<QVariantMap> &BundleReader::bundleInfoDict()
{
    static const QStringList candidates = {QStringLiteral("/Contents/Info.plist"),
                                           QStringLiteral("/Contents/Info-macos.plist"), QStringLiteral("/Info.plist")};
    return firstExisting(candidates, false);
}
