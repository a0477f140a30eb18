#pragma once

// Property lists and bundles on disk for tests, in XML, binary and .strings form.

#include <QByteArray>
#include <QString>
#include <QVariantMap>

namespace PlistFiles {

enum class PlistFormat { Xml, Binary };

// Writes bytes to path, creating the folders above it.
bool writeFile(const QString &path, const QByteArray &bytes);
bool writePlist(const QString &path, const QVariantMap &dictionary, PlistFormat format = PlistFormat::Xml);

// An information dictionary; empty arguments leave their key out.
QVariantMap info(const QString &bundleID, const QString &shortVersion, const QString &bundleVersion = {});

// Creates path as a bundle whose Contents/Info.plist holds info, and returns path.
QString makeBundle(const QString &path, const QVariantMap &info, PlistFormat format = PlistFormat::Xml);

// Contents/Resources/English.lproj/InfoPlist.strings as old-style text in UTF-16 with a byte-order mark.
bool writeInfoPlistStrings(const QString &bundlePath, const QString &text);

} // namespace PlistFiles
