#include "support/PlistFiles.h"

#include "model/PropertyList.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringEncoder>

namespace PlistFiles {

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

bool writePlist(const QString &path, const QVariantMap &dictionary, PlistFormat format)
{
    return writeFile(path,
                     format == PlistFormat::Xml ? PropertyList::toXml(dictionary) : PropertyList::toBinary(dictionary));
}

QVariantMap info(const QString &bundleID, const QString &shortVersion, const QString &bundleVersion)
{
    QVariantMap dict;
    if (!bundleID.isEmpty()) {
        dict.insert(QStringLiteral("CFBundleIdentifier"), bundleID);
    }
    if (!shortVersion.isEmpty()) {
        dict.insert(QStringLiteral("CFBundleShortVersionString"), shortVersion);
    }
    if (!bundleVersion.isEmpty()) {
        dict.insert(QStringLiteral("CFBundleVersion"), bundleVersion);
    }
    return dict;
}

QString makeBundle(const QString &path, const QVariantMap &info, PlistFormat format)
{
    writePlist(path + QStringLiteral("/Contents/Info.plist"), info, format);
    return path;
}

bool writeInfoPlistStrings(const QString &bundlePath, const QString &text)
{
    QStringEncoder encoder(QStringEncoder::Utf16LE);
    const QByteArray bytes = QByteArray("\xFF\xFE", 2) + QByteArray(encoder(text));
    return writeFile(bundlePath + QStringLiteral("/Contents/Resources/English.lproj/InfoPlist.strings"), bytes);
}

} // namespace PlistFiles
