// The record's archive form in the scan store: one JSON object keyed by field name. One table names every
// archived field; the writer and the reader both walk it, and the reader then runs the load-time repairs.

#include "model/BundleReader.h"
#include "model/PathNames.h"
#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "platform/Log.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocale>

#include <cmath>
#include <cstdio>
#include <variant>

namespace {

using Member = std::variant<QString VLApp::*, QDateTime VLApp::*, bool VLApp::*, std::optional<double> VLApp::*>;

enum class Read {
    Plain,
    Cleaned, // names and paths: trimmed, tabs and line breaks removed
    Never,   // written for other readers of the file, always worked out afresh on load
};

struct ArchiveField
{
    const char *key;
    Member member;
    Read read = Read::Plain;
};

const ArchiveField archiveFields[] = {
    {"keywords", &VLApp::keywords},
    {"ranking", &VLApp::ranking},
    {"wlID", &VLApp::wlID},
    {"listname", &VLApp::listname},
    {"localPath", &VLApp::localPath, Read::Cleaned},
    {"digestString", &VLApp::digestString},
    {"localizedName", &VLApp::localizedName, Read::Cleaned},
    {"name", &VLApp::name, Read::Cleaned},
    {"bundleID", &VLApp::bundleID},
    {"releaseNotes", &VLApp::releaseNotes},
    {"lastModified", &VLApp::lastModified},
    {"displayName", &VLApp::displayName, Read::Cleaned},
    {"download_url", &VLApp::download_url},
    {"mas_url", &VLApp::mas_url},
    {"localVersion", &VLApp::localVersion},
    {"vlVersion", &VLApp::vlVersion},
    {"masVersion", &VLApp::masVersion},
    {"skippedVersion", &VLApp::skippedVersion},
    {"vlDate", &VLApp::vlDate},
    {"masDate", &VLApp::masDate},
    {"sortDate", &VLApp::sortDate},
    {"shortDescription", &VLApp::shortDescription},
    {"longDescription", &VLApp::longDescription},
    {"fileSize", &VLApp::fileSize},
    {"minOS", &VLApp::minOS},
    {"beta", &VLApp::beta},
    {"vlID", &VLApp::vlID},
    {"paid_update", &VLApp::paid_update},
    {"developer", &VLApp::developer},
    {"license", &VLApp::license},
    {"lastOpened", &VLApp::lastOpened},
    {"lastmatched", &VLApp::lastmatched},
    {"lastupdated", &VLApp::lastupdated},
    {"isPaidUpgrade", &VLApp::isPaidUpgrade},
    {"isOutdated", &VLApp::isOutdated},
    {"isAppStore", &VLApp::isAppStore, Read::Never},
    {"dontCheckForUpdates", &VLApp::dontCheckForUpdates},
    {"orderid", &VLApp::orderid},
    {"deal_id", &VLApp::deal_id},
    {"purchasedVersion", &VLApp::purchasedVersion},
    {"orderDate", &VLApp::orderDate},
    {"serialNumber", &VLApp::serialNumber},
    {"version_override", &VLApp::version_override},
    {"opens_in_window", &VLApp::opens_in_window},
    {"vld_install_from_link", &VLApp::vld_install_from_link},
    {"isSetLocalVersionToCurrent", &VLApp::isSetLocalVersionToCurrent},
    // Kept so that a later process can still check a download against the catalogue's hash.
    {"filehash", &VLApp::filehash},
};

template <typename... Visitors> struct Overloaded : Visitors...
{
    using Visitors::operator()...;
};
// clang 14 (the fuzz build's compiler) does not deduce an aggregate's arguments without this guide.
template <typename... Visitors> Overloaded(Visitors...) -> Overloaded<Visitors...>;

QJsonValue encodeField(const VLApp &app, const Member &member)
{
    return std::visit(Overloaded{
                          [&app](QString VLApp::*text) {
                              return (app.*text).isNull() ? QJsonValue(QJsonValue::Null) : QJsonValue(app.*text);
                          },
                          [&app](QDateTime VLApp::*date) {
                              return (app.*date).isValid() ? QJsonValue((app.*date).toUTC().toString(Qt::ISODateWithMs))
                                                           : QJsonValue(QJsonValue::Null);
                          },
                          [&app](bool VLApp::*flag) { return QJsonValue(app.*flag); },
                          [&app](std::optional<double> VLApp::*number) {
                              return (app.*number) ? QJsonValue(*(app.*number)) : QJsonValue(QJsonValue::Null);
                          },
                      },
                      member);
}

// The same value written straight as compact JSON text, as QJsonDocument would: a store of thousands of records
// is saved without building each record's object first.
void appendJsonText(QByteArray &out, const QString &text)
{
    if (!text.isValidUtf16()) {
        // A lone surrogate has no UTF-8 form; QJsonDocument writes it as a \u escape, which loads back unchanged.
        const QByteArray wrapped = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
        out.append(wrapped.constData() + 1, wrapped.size() - 2);
        return;
    }
    out += '"';
    const QByteArray utf8 = text.toUtf8();
    const char *run = utf8.constData();
    const char *const end = run + utf8.size();
    for (const char *at = run; at != end; ++at) {
        const auto c = static_cast<unsigned char>(*at);
        if (c >= 0x20 && c != '"' && c != '\\') {
            continue;
        }
        out.append(run, at - run);
        run = at + 1;
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\b':
            out += "\\b";
            break;
        case '\f':
            out += "\\f";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default: {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", unsigned(c));
            out += escaped;
        }
        }
    }
    out.append(run, end - run);
    out += '"';
}

void appendFieldJson(QByteArray &out, const VLApp &app, const Member &member)
{
    std::visit(Overloaded{
                   [&](QString VLApp::*text) {
                       if ((app.*text).isNull()) {
                           out += "null";
                       } else {
                           appendJsonText(out, app.*text);
                       }
                   },
                   [&](QDateTime VLApp::*date) {
                       if ((app.*date).isValid()) {
                           appendJsonText(out, (app.*date).toUTC().toString(Qt::ISODateWithMs));
                       } else {
                           out += "null";
                       }
                   },
                   [&](bool VLApp::*flag) { out += app.*flag ? "true" : "false"; },
                   [&](std::optional<double> VLApp::*number) {
                       const std::optional<double> value = app.*number;
                       if (value && std::isfinite(*value)) {
                           out += QByteArray::number(*value, 'g', QLocale::FloatingPointShortest);
                       } else {
                           out += "null";
                       }
                   },
               },
               member);
}

// Most of a record's texts are the markers "-" and "": one shared copy of each, instead of one per field and
// record, is a fifth of a large store's memory.
QString sharedMarker(QString text)
{
    if (text.isNull()) {
        return text;
    }
    if (text.isEmpty()) {
        return RecordText::empty;
    }
    return text == RecordText::unknown ? RecordText::unknown : text;
}

// A missing or damaged value is absent (false for a flag); a number written where text belongs is read as its text.
void decodeField(VLApp &app, const Member &member, const QJsonValue &value, Read read)
{
    std::visit(Overloaded{
                   [&](QString VLApp::*text) {
                       QString decoded = value.isString()   ? value.toString()
                                         : value.isDouble() ? QString::number(value.toDouble(), 'g', 17)
                                                            : QString();
                       if (read == Read::Cleaned) {
                           decoded = removeTabsAndReturns(trimmedString(decoded));
                       }
                       app.*text = sharedMarker(std::move(decoded));
                   },
                   [&](QDateTime VLApp::*date) {
                       app.*date =
                           value.isString() ? QDateTime::fromString(value.toString(), Qt::ISODateWithMs) : QDateTime();
                   },
                   [&](bool VLApp::*flag) { app.*flag = value.toBool(false); },
                   [&](std::optional<double> VLApp::*number) {
                       app.*number = value.isDouble() ? std::optional<double>(value.toDouble()) : std::nullopt;
                   },
               },
               member);
}

// Stores written by older versions could carry the App Store mark twice.
void repairDoubledAppStoreMark(VLApp &app)
{
    if (app.isAppStore && app.displayName.contains(RecordText::appStoreMark + RecordText::appStoreMark)) {
        app.displayName = stringByDeletingPathExtension(app.name) + RecordText::appStoreMark;
        app.setVersiontoMASVersion();
    }
}

} // namespace

QJsonObject VLApp::encodeWithCoder() const
{
    QJsonObject archive;
    for (const ArchiveField &field : archiveFields) {
        archive.insert(QLatin1String(field.key), encodeField(*this, field.member));
    }
    return archive;
}

void VLApp::appendArchiveJson(QByteArray &out) const
{
    out += '{';
    bool first = true;
    for (const ArchiveField &field : archiveFields) {
        out += first ? "\"" : ",\"";
        first = false;
        out += field.key;
        out += "\":";
        appendFieldJson(out, *this, field.member);
    }
    out += '}';
}

VLApp VLApp::initWithCoder(const QJsonObject &archive, const VLApp *scanned)
{
    VLApp app;
    for (const ArchiveField &field : archiveFields) {
        if (field.read != Read::Never) {
            decodeField(app, field.member, archive.value(QLatin1String(field.key)), field.read);
        }
    }

    if (app.localPath.isEmpty() && !app.localPath.isNull()) {
        vlLog(QStringLiteral("localpath for app was blank, setting to - for %1").arg(app.name));
        app.localPath = RecordText::unknown;
    }
    if (scanned && scanned->localPath != app.localPath) {
        scanned = nullptr;
    }
    // What a scan of this very bundle has just read is not read again.
    BundleReader bundle(app.localPath);
    if (app.license.isNull()) {
        vlLog(QStringLiteral("fixing null license in cache"));
        app.license = RecordText::empty;
    }
    if (app.minOS.isNull()) {
        vlLog(QStringLiteral("fixing null min os in cache"));
        app.minOS = RecordText::empty;
    }
    if (app.bundleID.isNull()) {
        vlLog(QStringLiteral("fixing null bundle id in cache"));
        app.bundleID = scanned ? scanned->bundleID : app.getBundleID(bundle);
    }
    app.applyInstallFromLinkRule();
    if (app.displayName.isEmpty()) {
        app.displayName = stringByDeletingPathExtension(app.name);
    }

    if (scanned) {
        app.refreshLocalVersion(scanned);
        app.updateModDate(scanned);
        app.isAppStore = scanned->isAppStore;
        app.appIcon = scanned->appIcon;
    } else {
        app.refreshLocalVersion(bundle);
        app.updateModDate();
        app.isAppStore = app.getIsAppStore();
        app.appIcon = app.isInstalled() ? app.iconFilePath(bundle) : RecordText::empty;
    }
    app.markAppStoreName();
    repairDoubledAppStoreMark(app);
    app.requiresNewerOSVersion = app.getRequiresNewerOSVersion();

    app.checkIfOutdated();
    app.kind = pathExtension(app.name);
    app.downloadPath = app.createDownloadPath();
    return app;
}
