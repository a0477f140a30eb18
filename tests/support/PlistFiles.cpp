#include "support/PlistFiles.h"

#include "model/PlistBudget.h"
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

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
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

namespace {

QByteArray bigEndian(quint64 value, int size)
{
    QByteArray bytes(size, '\0');
    for (int i = size - 1; i >= 0; --i, value >>= 8) {
        bytes[i] = char(value & 0xFF);
    }
    return bytes;
}

// A marker with its count: in the marker up to 14, else in an integer object after it.
QByteArray counted(uchar marker, qsizetype count, bool wide)
{
    if (count < 15 && !wide) {
        return QByteArray(1, char(marker | count));
    }
    return QByteArray(1, char(marker | 0xF)) + (wide ? "\x14" + bigEndian(0, 8) : QByteArray("\x13")) +
           bigEndian(quint64(count), 8);
}

} // namespace

int BinaryPlist::string(const QByteArray &ascii)
{
    m_objects.append(counted(0x50, ascii.size(), false) + ascii);
    return int(m_objects.size() - 1);
}

int BinaryPlist::integer128(quint64 high, quint64 low)
{
    m_objects.append("\x14" + bigEndian(high, 8) + bigEndian(low, 8));
    return int(m_objects.size() - 1);
}

int BinaryPlist::dict(const QList<int> &keys, const QList<int> &values)
{
    return container(0xD0, keys + values, keys.size(), false);
}

int BinaryPlist::container(uchar marker, const QList<int> &refs, qsizetype count, bool wideCount)
{
    QByteArray object = counted(marker, count, wideCount);
    for (int ref : refs) {
        object += bigEndian(quint64(ref), 4);
    }
    m_objects.append(object);
    return int(m_objects.size() - 1);
}

QByteArray BinaryPlist::bytes() const
{
    QByteArray out = "bplist00";
    QByteArray offsets;
    for (const QByteArray &object : m_objects) {
        offsets += bigEndian(quint64(out.size()), 8);
        out += object;
    }
    const quint64 table = quint64(out.size());
    return out + offsets + QByteArray(6, '\0') + "\x08\x04" + bigEndian(quint64(m_objects.size()), 8) +
           bigEndian(quint64(m_objects.size() - 1), 8) + bigEndian(table, 8);
}

QList<HostileList> hostileLists()
{
    constexpr int kLevels = 100000;
    const QByteArray deepXml = "<plist><dict><key>k</key>" + QByteArray("<array>").repeated(kLevels) +
                               QByteArray("</array>").repeated(kLevels) + "</dict></plist>";
    const QByteArray closing = QByteArray("</array>").repeated(kLevels);

    BinaryPlist wideCounts; // a dictionary over arrays nested kLevels deep, each count written in 16 bytes
    int level = wideCounts.array({}, true);
    for (int i = 1; i < kLevels; ++i) {
        level = wideCounts.array({level}, true);
    }
    wideCounts.dict({wideCounts.string("k")}, {level});
    BinaryPlist shared; // 40 levels of arrays that hold the next level twice: 2^40 copies of the last
    level = shared.string("v");
    for (int i = 0; i < 40; ++i) {
        level = shared.array({level, level});
    }
    shared.dict({shared.string("k")}, {level});

    QByteArray keys;
    for (int i = 0; i < 1000000; ++i) {
        keys += "<key>" + QByteArray::number(i, 36) + "</key><true/>";
    }
    return {
        {"nesting behind closing tags in a processing instruction",
         "<?xml version=\"1.0\"?><?hide " + closing + "?>" + deepXml, PlistBudget::tooDeep()},
        {"nesting behind closing tags in a DOCTYPE", "<!DOCTYPE plist [<?hide " + closing + "?>]>" + deepXml,
         PlistBudget::tooDeep()},
        {"binary nesting with 16-byte counts", wideCounts.bytes(), PlistBudget::tooDeep()},
        {"binary arrays sharing their items", shared.bytes(), PlistBudget::tooManyObjects()},
        {"a million keys", "<plist><dict>" + keys + "</dict></plist>", PlistBudget::tooManyObjects()},
    };
}

} // namespace PlistFiles
