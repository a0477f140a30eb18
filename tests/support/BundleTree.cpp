#include "support/BundleTree.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

QByteArray escaped(const QString &text)
{
    return text.toHtmlEscaped().toUtf8();
}

void writeValue(QByteArray &out, const QVariant &value, int depth)
{
    const QByteArray indent(depth, '\t');
    switch (value.typeId()) {
    case QMetaType::Bool:
        out += indent + (value.toBool() ? "<true/>\n" : "<false/>\n");
        break;
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        out += indent + "<integer>" + QByteArray::number(value.toLongLong()) + "</integer>\n";
        break;
    case QMetaType::Double:
        out += indent + "<real>" + QByteArray::number(value.toDouble()) + "</real>\n";
        break;
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        out += indent + "<array>\n";
        for (const QVariant &item : value.toList()) {
            writeValue(out, item, depth + 1);
        }
        out += indent + "</array>\n";
        break;
    case QMetaType::QVariantMap: {
        const QVariantMap map = value.toMap();
        out += indent + "<dict>\n";
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            out += indent + "\t<key>" + escaped(it.key()) + "</key>\n";
            writeValue(out, it.value(), depth + 1);
        }
        out += indent + "</dict>\n";
        break;
    }
    default:
        out += indent + "<string>" + escaped(value.toString()) + "</string>\n";
    }
}

void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(content);
    }
}

} // namespace

BundleTree::BundleTree(const QString &root)
    : m_root(root)
{
    QDir().mkpath(root);
}

QString BundleTree::path(const QString &relative) const
{
    return m_root + QLatin1Char('/') + relative;
}

QString BundleTree::addBundle(const QString &relative, const QVariantMap &info)
{
    const QString bundle = path(relative);
    QDir().mkpath(bundle);
    if (!info.isEmpty()) {
        writeFile(bundle + QStringLiteral("/Contents/Info.plist"), xmlPlist(info));
    }
    const QString executable = info.value(QStringLiteral("CFBundleExecutable")).toString();
    if (!executable.isEmpty()) {
        const QString file = bundle + QStringLiteral("/Contents/MacOS/") + executable;
        writeFile(file, "#!/bin/sh\n");
        QFile::setPermissions(file, QFile::permissions(file) | QFile::ExeOwner);
    }
    return bundle;
}

QString BundleTree::addFile(const QString &relative, const QByteArray &content)
{
    writeFile(path(relative), content);
    return path(relative);
}

QString BundleTree::addFolder(const QString &relative)
{
    QDir().mkpath(path(relative));
    return path(relative);
}

QString BundleTree::addSymlink(const QString &relative, const QString &target)
{
    QDir().mkpath(QFileInfo(path(relative)).path());
    QFile::link(target, path(relative));
    return path(relative);
}

QByteArray BundleTree::xmlPlist(const QVariantMap &dictionary)
{
    QByteArray out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                     "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                     "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                     "<plist version=\"1.0\">\n";
    writeValue(out, dictionary, 0);
    out += "</plist>\n";
    return out;
}
