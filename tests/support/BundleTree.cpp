#include "support/BundleTree.h"

#include "support/PlistFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

BundleTree::BundleTree(const QString &root) : m_root(root)
{
    QDir().mkpath(root);
}

QString BundleTree::addBundle(const QString &relative, const QVariantMap &info)
{
    QDir().mkpath(path(relative));
    return info.isEmpty() ? path(relative) : PlistFiles::makeBundle(path(relative), info);
}

QString BundleTree::addFile(const QString &relative, const QByteArray &content)
{
    PlistFiles::writeFile(path(relative), content);
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
