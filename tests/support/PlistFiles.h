#pragma once

// Property lists and bundles on disk for tests, in XML, binary and .strings form.

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariantMap>

namespace PlistFiles {

enum class PlistFormat { Xml, Binary };

// Writes bytes to path, creating the folders above it.
bool writeFile(const QString &path, const QByteArray &bytes);
// The bytes at path; empty when it cannot be read.
QByteArray readFile(const QString &path);
bool writePlist(const QString &path, const QVariantMap &dictionary, PlistFormat format = PlistFormat::Xml);

// An information dictionary; empty arguments leave their key out.
QVariantMap info(const QString &bundleID, const QString &shortVersion, const QString &bundleVersion = {});

// Creates path as a bundle whose Contents/Info.plist holds info, and returns path.
QString makeBundle(const QString &path, const QVariantMap &info, PlistFormat format = PlistFormat::Xml);

// Contents/Resources/English.lproj/InfoPlist.strings as old-style text in UTF-16 with a byte-order mark.
bool writeInfoPlistStrings(const QString &bundlePath, const QString &text);

// A binary list written object by object, in shapes no writer makes: objects shared by several containers, counts
// written as 16-byte integers, integers wider than 64 bits, text holding NUL. Objects are numbered as they are
// added; the last is the top object.
class BinaryPlist
{
public:
    int string(const QByteArray &ascii);
    int integer128(quint64 high, quint64 low);
    // refs: the items of an array; a dictionary's keys, then its values. wideCount writes the count as a 16-byte
    // integer.
    int array(const QList<int> &refs, bool wideCount = false) { return container(0xA0, refs, refs.size(), wideCount); }
    int dict(const QList<int> &keys, const QList<int> &values);
    QByteArray bytes() const;

private:
    int container(uchar marker, const QList<int> &refs, qsizetype count, bool wideCount);
    QList<QByteArray> m_objects;
};

// Lists a reader must refuse quickly, each past one of its bounds, with the problem it names.
struct HostileList
{
    const char *name;
    QByteArray bytes;
    QString problem;
};
QList<HostileList> hostileLists();

} // namespace PlistFiles
