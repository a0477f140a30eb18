#include "install/VLInstaller.h"

#include "model/VLApp.h"
#include "platform/FileStatus.h"
#include "platform/FolderReader.h"
#include "platform/Log.h"
#include "platform/NativePath.h"

#include <QFileInfo>

#include <unistd.h>

// Choosing, in a folder tree some vendor made, the one item that is the new version. There is no manifest: names,
// a vocabulary of names that never are the app, and a fixed order of fall-backs decide.

namespace {

const QStringList kNeverNamed = {QStringLiteral("__MACOSX"),   QStringLiteral("MacOS"),     QStringLiteral("Contents"),
                                 QStringLiteral("Desktop DB"), QStringLiteral("Readme"),    QStringLiteral("credits"),
                                 QStringLiteral("CLI "),       QStringLiteral("Desktop DF")};
const QStringList kNeverContaining = {QStringLiteral("Applications"), QStringLiteral("Programme"),
                                      QStringLiteral("background"),   QStringLiteral("Uninstall"),
                                      QStringLiteral("REMOVER"),      QStringLiteral("Extras")};
const QStringList kNeverContainingDocs = {QStringLiteral("Remove"),
                                          QStringLiteral("Read Before"),
                                          QStringLiteral("Read Me"),
                                          QStringLiteral("License Agreement"),
                                          QStringLiteral("Getting Started"),
                                          QStringLiteral("AspyrDocWrapper"),
                                          QStringLiteral(" Patch"),
                                          QStringLiteral(".rtf"),
                                          QStringLiteral(".txt"),
                                          QStringLiteral(".pdf"),
                                          QStringLiteral(".url"),
                                          QStringLiteral(".inetloc"),
                                          QStringLiteral(".webloc"),
                                          QStringLiteral(" Scripts"),
                                          QStringLiteral("Organise Report Builder")};

bool containsAny(const QString &name, const QStringList &parts)
{
    return std::any_of(parts.begin(), parts.end(),
                       [&name](const QString &part) { return name.contains(part, Qt::CaseInsensitive); });
}

bool mayBeCandidate(const QString &name)
{
    if (name.startsWith(QLatin1Char('.')) || kNeverNamed.contains(name) || containsAny(name, kNeverContaining) ||
        name == QLatin1String("Icon") || containsAny(name, kNeverContainingDocs)) {
        return false;
    }
    return !name.contains(QLatin1String("Updater"), Qt::CaseInsensitive) ||
           name.contains(QLatin1String("Dyn Updater"), Qt::CaseInsensitive);
}

QString fileName(const QString &path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

bool isFolder(const QString &path)
{
    return FileStatus::of(path, FileStatus::Links::Own).isFolder;
}

// When an app bundle and an item of kind (a package, a browser extension, a plug-in) came together, the app that
// carries the record's name wins and the other is dropped.
void resolvePair(QStringList &candidates, const QString &kind, const QString &appName)
{
    const auto anyContains = [&candidates](const QString &part) {
        return std::any_of(candidates.begin(), candidates.end(),
                           [&part](const QString &path) { return fileName(path).contains(part); });
    };
    if (!anyContains(QStringLiteral(".app")) || !anyContains(kind)) {
        return;
    }
    vlLog(QStringLiteral("found both app and %1 - look for best match").arg(kind.mid(1)));
    const bool pkgPass = kind == QLatin1String(".pkg");
    QString app;
    QString item;
    bool appNamed = false;
    bool itemNamed = false;
    for (const QString &path : std::as_const(candidates)) {
        const QString name = fileName(path);
        const bool isApp = name.contains(QLatin1String(".app"), Qt::CaseInsensitive);
        const bool isKind = name.contains(kind, Qt::CaseInsensitive);
        const bool named = name.contains(appName, Qt::CaseInsensitive);
        if (isApp && named) {
            app = path;
            appNamed = true;
        }
        if (isKind && named) {
            item = path;
            itemNamed = true;
        }
        if (isKind && item.isEmpty()) {
            item = path;
        }
        if (isApp && !appNamed) {
            // The package pass keeps its fall-back app in the package's slot: with a named app found later, it is
            // that fall-back which is dropped.
            (pkgPass ? item : app) = path;
        }
    }
    if (appNamed) {
        candidates.removeOne(item);
    } else if (itemNamed) {
        candidates.removeOne(app);
    }
}

} // namespace

QStringList VLInstaller::installCandidates(const QString &folder)
{
    QStringList candidates;
    FolderReader reader(NativePath::encode(folder));
    for (const FolderReader::Entry &entry : reader.entries()) {
        const QString name = NativePath::decode(entry.name);
        const QString path = folder + QLatin1Char('/') + name;
        if (!entry.isLink && access(NativePath::encode(path).constData(), R_OK) == 0 && mayBeCandidate(name)) {
            candidates.append(path);
        }
    }
    if (!m_senderApp || m_senderApp->name.isEmpty()) {
        return candidates;
    }
    for (const QString &kind : {QStringLiteral(".pkg"), QStringLiteral(".safariextz"), QStringLiteral(".plugin")}) {
        resolvePair(candidates, kind, m_senderApp->name);
    }
    return candidates;
}

QString VLInstaller::findBestMatchFromCandidates(const QStringList &candidates, const QString &match)
{
    QString wanted = match;
    if (wanted == QLatin1String("Applications") && m_senderApp && !m_senderApp->name.isEmpty()) {
        wanted = m_senderApp->name;
    }
    const QString ext = QFileInfo(wanted).suffix();
    const bool airfoil = m_senderApp && m_senderApp->name.contains(QLatin1String("Airfoil")) &&
                         m_senderApp->localPath == QLatin1String("-");

    QString result;
    for (const QString &path : candidates) {
        const QString name = fileName(path);
        if (airfoil && name == QLatin1String("Airfoil Speakers.app")) {
            continue;
        }
        if ((airfoil && name == QLatin1String("Airfoil.app")) || name == wanted ||
            (name.contains(wanted) && !ext.isEmpty() && name.contains(ext)) ||
            name.contains(wanted, Qt::CaseInsensitive) || name.contains(QLatin1String("pkg"))) {
            result = path;
            break;
        }
    }

    const auto descend = [this, &wanted](const QString &folder) {
        vlLog(QStringLiteral("found directory - look for best candidate - %1").arg(folder));
        return findBestMatchFromCandidates(installCandidates(folder), wanted);
    };
    if (candidates.size() == 1 && result.isEmpty()) {
        result = candidates.front();
        const QString kind = QFileInfo(result).suffix();
        if (kind == QLatin1String("app")) {
            vlLog(QStringLiteral("found directory or app bundle - %1").arg(result));
        } else if (isFolder(result) && !QStringList{QStringLiteral("mailbundle"), QStringLiteral("wdgt"),
                                                    QStringLiteral("pkg"), QStringLiteral("mpkg")}
                                            .contains(kind)) {
            result = descend(result);
        }
    }
    if (result.isEmpty()) {
        const QList<std::pair<QString, Qt::CaseSensitivity>> kinds = {
            {QStringLiteral(".app"), Qt::CaseSensitive},
            {QStringLiteral(".prefpane"), Qt::CaseInsensitive},
            {QStringLiteral(".wdgt"), Qt::CaseInsensitive},
            {QStringLiteral(".saver"), Qt::CaseInsensitive},
            {QStringLiteral(".safariextz"), Qt::CaseInsensitive}};
        for (const auto &kind : kinds) {
            const auto found = std::find_if(candidates.begin(), candidates.end(), [&](const QString &path) {
                return fileName(path).contains(kind.first, kind.second);
            });
            if (found != candidates.end()) {
                result = *found;
                break;
            }
        }
    }
    if (candidates.size() == 1 && !result.isEmpty() && isFolder(result)) {
        const QString kind = QFileInfo(result).suffix();
        if (kind == QLatin1String("prefPane")) {
            vlLog(QStringLiteral("found prefPane - %1").arg(result));
        } else if (kind != QLatin1String("app") && !QStringList{QStringLiteral("mailbundle"), QStringLiteral("wdgt"),
                                                                QStringLiteral("pkg"), QStringLiteral("mpkg")}
                                                        .contains(kind)) {
            result = descend(result);
        }
    }
    if (result.isEmpty()) {
        vlLog(QStringLiteral("could not find best install candidate - keep trying"));
        for (auto it = candidates.rbegin(); it != candidates.rend() && result.isEmpty(); ++it) {
            vlLog(QStringLiteral("trying %1").arg(*it));
            result = findBestMatchFromCandidates(installCandidates(*it), wanted);
        }
    }
    return result;
}
