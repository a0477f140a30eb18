// Makes the fuzz seed corpora from the text seeds in the repository: every seed is copied, each XML property
// list gets a binary twin and a UTF-16 one, and each .strings file gets UTF-16 twins (little-endian with a
// byte-order mark, big-endian without), as bundles ship all of these; each matching reply gets its zlib form, as
// the service sends it. So no binary seed is kept in the repository.
//
// Usage: velmora-fuzz-seeds SOURCE_FOLDER OUTPUT_FOLDER (OUTPUT_FOLDER is replaced).

#include <QDir>
#include <QFile>
#include <QStringEncoder>

#include <plist/plist.h>

#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

std::optional<QByteArray> readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return file.readAll();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

std::optional<QByteArray> binaryPlist(const QByteArray &xml)
{
    plist_t root = nullptr;
    plist_from_xml(xml.constData(), uint32_t(xml.size()), &root);
    if (!root) {
        return std::nullopt;
    }
    char *buffer = nullptr;
    uint32_t length = 0;
    plist_to_bin(root, &buffer, &length);
    const QByteArray bytes(buffer, qsizetype(length));
    plist_to_bin_free(buffer);
    plist_free(root);
    return bytes;
}

QByteArray utf16(const QByteArray &utf8, QStringConverter::Encoding encoding, bool withMark)
{
    QStringEncoder encoder(encoding, withMark ? QStringConverter::Flag::WriteBom : QStringConverter::Flag::Default);
    return encoder(QString::fromUtf8(utf8));
}

// The seed and its twins, by file name.
QList<std::pair<QString, QByteArray>> seedsFrom(const QString &name, const QByteArray &bytes, QString *error)
{
    QList<std::pair<QString, QByteArray>> seeds{{name, bytes}};
    const QString base = name.section(u'.', 0, -2);
    if (name.endsWith(QLatin1String(".xml"))) {
        const std::optional<QByteArray> binary = binaryPlist(bytes);
        if (!binary) {
            *error = QStringLiteral("not an XML property list");
            return {};
        }
        seeds.append({base + QStringLiteral(".bplist"), *binary});
        seeds.append({base + QStringLiteral("-utf16le.xml"), utf16(bytes, QStringConverter::Utf16LE, true)});
    } else if (name.endsWith(QLatin1String(".strings"))) {
        seeds.append({base + QStringLiteral("-utf16le.strings"), utf16(bytes, QStringConverter::Utf16LE, true)});
        seeds.append({base + QStringLiteral("-utf16be.strings"), utf16(bytes, QStringConverter::Utf16BE, false)});
    } else if (name.endsWith(QLatin1String(".reply"))) {
        // A matching reply comes as a zlib stream: qCompress's, after its four bytes of length.
        seeds.append({base + QStringLiteral(".zlib"), qCompress(bytes, 9).mid(4)});
    }
    return seeds;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s SOURCE_FOLDER OUTPUT_FOLDER\n", argv[0]);
        return 2;
    }
    const QDir source(QFile::decodeName(argv[1]));
    QDir output(QFile::decodeName(argv[2]));
    output.removeRecursively();
    for (const QString &target : source.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QDir from(source.filePath(target));
        const QString to = output.filePath(target);
        if (!QDir().mkpath(to)) {
            std::fprintf(stderr, "cannot make %s\n", qPrintable(to));
            return 1;
        }
        for (const QString &name : from.entryList(QDir::Files)) {
            const std::optional<QByteArray> bytes = readFile(from.filePath(name));
            if (!bytes) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(from.filePath(name)));
                return 1;
            }
            QString error;
            const auto seeds = seedsFrom(name, *bytes, &error);
            if (seeds.isEmpty()) {
                std::fprintf(stderr, "%s: %s\n", qPrintable(from.filePath(name)), qPrintable(error));
                return 1;
            }
            for (const auto &[seedName, seedBytes] : seeds) {
                if (!writeFile(to + u'/' + seedName, seedBytes)) {
                    std::fprintf(stderr, "cannot write %s\n", qPrintable(to + u'/' + seedName));
                    return 1;
                }
            }
        }
    }
    return 0;
}
