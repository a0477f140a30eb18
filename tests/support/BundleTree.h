#pragma once

// Builds folders of bundles for tests: app, plug-in and widget folders with an XML Info.plist, plain files and
// links, under one root folder.

#include <QByteArray>
#include <QString>
#include <QVariantMap>

class BundleTree
{
public:
    explicit BundleTree(const QString &root);

    QString root() const { return m_root; }
    QString path(const QString &relative) const;

    // A bundle folder with Contents/Info.plist holding info (no file when info is empty). When info names a
    // CFBundleExecutable, Contents/MacOS/<name> is made as well.
    QString addBundle(const QString &relative, const QVariantMap &info = {});
    QString addFile(const QString &relative, const QByteArray &content = {});
    QString addFolder(const QString &relative);
    QString addSymlink(const QString &relative, const QString &target);

    // Strings, booleans, integers, doubles, lists and dictionaries as an XML property list.
    static QByteArray xmlPlist(const QVariantMap &dictionary);

private:
    QString m_root;
};
