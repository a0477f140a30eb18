#include "model/BundleReader.h"

#include "model/PropertyList.h"
#include "platform/Log.h"

BundleReader::BundleReader(const QString &bundlePath) : m_path(bundlePath) {}

const BundleReader::File &BundleReader::load(const QString &relativePath, bool stringsFile)
{
    auto it = m_files.find(relativePath);
    if (it != m_files.end()) {
        return it->second;
    }
    const QString path = m_path + relativePath;
    PropertyList::ReadResult result =
        stringsFile ? PropertyList::readStringsFile(path) : PropertyList::readDictionaryFile(path);
    // A list that cannot be read is passed over, once per bundle; the readers go on with the other files.
    if (!result.problem.isEmpty()) {
        vlLog(QStringLiteral("exception 2 checking %1 %2").arg(m_path, result.problem));
        m_problems.append(result.problem);
        m_problemFiles.append(path);
    }
    return m_files.emplace(relativePath, File{std::move(result.dictionary), result.exists}).first->second;
}

// Opening a candidate is what tells whether it exists: a scan reads thousands of bundles, and a separate
// existence check would cost one more system call per file.
const std::optional<QVariantMap> &BundleReader::firstExisting(const QStringList &candidates, bool stringsFile)
{
    const File *file = nullptr;
    for (const QString &candidate : candidates) {
        file = &load(candidate, stringsFile && candidate.endsWith(QLatin1String(".strings")));
        if (file->exists) {
            break;
        }
    }
    // None exists: the last one has been tried anyway, which yields no dictionary.
    return file->dictionary;
}

const std::optional<QVariantMap> &BundleReader::dictionaryAt(const QString &relativePath)
{
    return load(relativePath, false).dictionary;
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
