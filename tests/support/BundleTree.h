#pragma once

// A folder tree of bundles for scanner tests: bundles, plain files and links under one root.

#include <QString>
#include <QVariantMap>

class BundleTree
{
public:
    explicit BundleTree(const QString &root);

    QString root() const { return m_root; }
    QString path(const QString &relative) const { return m_root + QLatin1Char('/') + relative; }

    // A bundle folder; with info, its Contents/Info.plist (XML) holds it.
    QString addBundle(const QString &relative, const QVariantMap &info = {});
    QString addFile(const QString &relative, const QByteArray &content = {});
    QString addFolder(const QString &relative);
    QString addSymlink(const QString &relative, const QString &target);

private:
    QString m_root;
};
