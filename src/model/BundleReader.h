#pragma once

// Reads the property lists of one bundle, each file at most once, in the candidate orders the version
// readers use. One reader serves one pass over a bundle; it does not notice later changes on disk.

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <map>
#include <optional>

class BundleReader
{
public:
    explicit BundleReader(const QString &bundlePath);

    QString path() const { return m_path; }

    // Contents/Info.plist, Contents/version.plist, Contents/Info-macos.plist, Info.plist: the first that exists.
    const std::optional<QVariantMap> &infoDictionary();
    // Contents/version.plist, Contents/Info-macos.plist, Info.plist.
    const std::optional<QVariantMap> &versionPlistDictionary();
    // Contents/Resources/English.lproj/InfoPlist.strings, Contents/Info-macos.plist, Info.plist.
    const std::optional<QVariantMap> &infoPlistStringsDictionary();
    // The bundle's own information dictionary: Contents/Info.plist, Contents/Info-macos.plist, Info.plist.
    const std::optional<QVariantMap> &bundleInfoDict();
    // The property list at one place in the bundle ("/Contents/Info.plist"), whichever others exist.
    const std::optional<QVariantMap> &dictionaryAt(const QString &relativePath);

    // Files that exist but could not be read or parsed, with the reason.
    QStringList problems() const { return m_problems; }
    // Those files' full paths, in the same order.
    QStringList problemFiles() const { return m_problemFiles; }

private:
    struct File
    {
        std::optional<QVariantMap> dictionary;
        bool exists = false;
    };

    const std::optional<QVariantMap> &firstExisting(const QStringList &candidates, bool stringsFile);
    const File &load(const QString &relativePath, bool stringsFile);

    QString m_path;
    // A node-based map: references handed out stay valid while more files are loaded.
    std::map<QString, File> m_files;
    QStringList m_problems;
    QStringList m_problemFiles;
};
