#include "install/WorkFolder.h"

#include "platform/Log.h"
#include "platform/NativePath.h"

#include <QStandardPaths>
#include <QUuid>

#include <algorithm>

#include <filesystem>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace WorkFolder {

namespace {

fs::path nativePath(const QString &path)
{
    return fs::path(NativePath::encode(path).toStdString());
}

bool lexists(const QString &path)
{
    struct stat info = {};
    return lstat(NativePath::encode(path).constData(), &info) == 0;
}

} // namespace

QString uniqueName()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

bool prepare(const QString &path)
{
    if (lexists(path)) {
        vlLog(QStringLiteral("error extracting to %1 - folder already exists").arg(path));
        remove(path);
    }
    std::error_code error;
    fs::create_directories(nativePath(path), error);
    struct stat info = {};
    if (lstat(NativePath::encode(path).constData(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        vlLog(QStringLiteral("error extracting to %1 - folder did not create").arg(path));
        return false;
    }
    return true;
}

bool remove(const QString &path)
{
    const fs::path root = nativePath(path);
    std::error_code error;
    if (fs::is_directory(fs::symlink_status(root, error))) {
        // A tool may have made folders without write permission; their entries could not be removed otherwise.
        fs::permissions(root, fs::perms::owner_all, fs::perm_options::add, error);
        for (auto it = fs::recursive_directory_iterator(root, error);
             !error && it != fs::recursive_directory_iterator(); it.increment(error)) {
            if (it->is_directory(error) && !it->is_symlink(error)) {
                fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, error);
            }
        }
    }
    fs::remove_all(root, error);
    return !lexists(path);
}

bool isContainedName(const QString &name)
{
    if (name.startsWith(QLatin1Char('/'))) {
        return false;
    }
    const QStringList steps = name.split(QLatin1Char('/'));
    return !steps.contains(QStringLiteral(".."));
}

bool listsContainedNames(const QByteArray &listing)
{
    const QList<QByteArray> lines = listing.split('\n');
    for (const QByteArray &line : lines) {
        if (!isContainedName(NativePath::decode(line))) {
            return false;
        }
    }
    return true;
}

bool listsOnlyPlainKinds(const QByteArray &longListing)
{
    const QList<QByteArray> lines = longListing.split('\n');
    return std::all_of(lines.cbegin(), lines.cend(), [](const QByteArray &line) {
        // "h": a hard link to an entry listed before it.
        return line.isEmpty() || QByteArrayLiteral("-dlh").contains(line.front());
    });
}

bool holdsOnlyPlainEntries(const QString &folder)
{
    const fs::path root = nativePath(folder);
    std::error_code error;
    if (!fs::is_directory(fs::symlink_status(root, error))) {
        return false;
    }
    for (auto it = fs::recursive_directory_iterator(root, error); it != fs::recursive_directory_iterator();
         it.increment(error)) {
        if (error) {
            return false;
        }
        const fs::file_type type = it->symlink_status(error).type();
        if (type != fs::file_type::directory && type != fs::file_type::regular && type != fs::file_type::symlink) {
            return false;
        }
    }
    return !error;
}

QString tool(const QString &name)
{
    const QString found = QStandardPaths::findExecutable(name);
    return found.isEmpty() ? QStringLiteral("/usr/bin/") + name : found;
}

} // namespace WorkFolder
