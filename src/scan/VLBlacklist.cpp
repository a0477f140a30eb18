#include "scan/VLBlacklist.h"

#include "model/BundleReader.h"
#include "model/PathNames.h"
#include "platform/WebRequest.h"

#include <QDir>
#include <QStringDecoder>

#include <system_error>

namespace {

const QStringList kVirtualMachineIdentifiers = {QStringLiteral("com.parallels.winapp"),
                                                QStringLiteral("com.vmware.proxyApp")};

bool containsAny(const QString &text, std::initializer_list<const char *> needles)
{
    for (const char *needle : needles) {
        if (text.contains(QLatin1String(needle))) {
            return true;
        }
    }
    return false;
}

// Only these two identifiers mark a virtual-machine wrapper; an Adobe identifier alone is no reason to hide an app.
bool isVirtualMachineApp(BundleReader &bundle)
{
    const std::optional<QVariantMap> &info = bundle.dictionaryAt(QStringLiteral("/Contents/Info.plist"));
    if (!info) {
        return false;
    }
    const QString identifier = info->value(QStringLiteral("CFBundleIdentifier")).toString();
    for (const QString &vm : kVirtualMachineIdentifiers) {
        if (identifier.contains(vm)) {
            return true;
        }
    }
    return false;
}

QString decodeText(const QByteArray &bytes, const QByteArray &contentType)
{
    std::optional<QStringConverter::Encoding> encoding = QStringConverter::encodingForData(bytes);
    if (!encoding) {
        const qsizetype charset = contentType.toLower().indexOf("charset=");
        if (charset >= 0) {
            QByteArray name = contentType.mid(charset + 8).trimmed();
            name = name.left(name.indexOf(';')).trimmed();
            if (name.startsWith('"') && name.endsWith('"') && name.size() >= 2) {
                name = name.mid(1, name.size() - 2);
            }
            encoding = QStringConverter::encodingForName(name.constData());
        }
    }
    if (encoding) {
        QStringDecoder decoder(*encoding);
        return decoder.decode(bytes);
    }
    QStringDecoder utf8(QStringConverter::Utf8);
    const QString text = utf8.decode(bytes);
    return utf8.hasError() ? QString::fromLatin1(bytes) : text;
}

} // namespace

const QStringList &VLBlacklist::builtInWidgets()
{
    // The last entry is not a widget and can never match here; it has always been on this list.
    static const QStringList widgets = {
        QStringLiteral("iCal.wdgt"),
        QStringLiteral("iTunes.wdgt"),
        QStringLiteral("Tile Game.wdgt"),
        QStringLiteral("Address Book.wdgt"),
        QStringLiteral("World Clock.wdgt"),
        QStringLiteral("Unit Converter.wdgt"),
        QStringLiteral("Translation.wdgt"),
        QStringLiteral("Remote Desktop.wdgt"),
        QStringLiteral("Web Clip.wdgt"),
        QStringLiteral("Stickies.wdgt"),
        QStringLiteral("Stocks.wdgt"),
        QStringLiteral("Ski Report.wdgt"),
        QStringLiteral("Dictionary.wdgt"),
        QStringLiteral("Calculator.wdgt"),
        QStringLiteral("Weather.wdgt"),
        QStringLiteral("Calendar.wdgt"),
        QStringLiteral("Contacts.wdgt"),
        QStringLiteral("Flight Tracker.wdgt"),
        QStringLiteral("ESPN.wdgt"),
        QStringLiteral("Movies.wdgt"),
        QStringLiteral("MusicManager.prefPane"),
    };
    return widgets;
}

QStringList VLBlacklist::splitServerList(const QString &text)
{
    QStringList names = text.split(QLatin1Char('\n'));
    names.removeAll(QString());
    return names;
}

std::optional<QString> VLBlacklist::fetchServerText(const QString &baseUrl, const std::atomic<bool> *cancel)
{
    WebRequest request =
        WebRequest::get(QUrl(baseUrl + QStringLiteral("/vld6blacklist")), QString(), WebRequest::Kind::Blacklist);
    request.cancel = cancel;
    const WebResult result = sendWebRequest(request);
    if (!result.succeeded()) {
        return std::nullopt;
    }
    return decodeText(result.body, result.header(QByteArrayLiteral("Content-Type")));
}

std::shared_future<QStringList> VLBlacklist::fetchServerList(const QString &baseUrl,
                                                             std::shared_ptr<const std::atomic<bool>> cancel)
{
    const auto fetch = [baseUrl, cancel]() -> QStringList {
        // Nothing may escape the thread: a fetch that breaks is one that read nothing.
        try {
            const std::optional<QString> text = fetchServerText(baseUrl, cancel.get());
            return text ? splitServerList(*text) : QStringList();
        } catch (...) {
            return {};
        }
    };
    try {
        return std::async(std::launch::async, fetch).share();
    } catch (const std::system_error &) {
        // No thread to be had: the built-in list alone, as when the service cannot be reached.
        std::promise<QStringList> none;
        none.set_value({});
        return none.get_future().share();
    }
}

VLBlacklist::VLBlacklist() : VLBlacklist(builtInList()) {}

VLBlacklist::VLBlacklist(const QStringList &names)
{
    append(names);
}

void VLBlacklist::append(const QStringList &names)
{
    m_names.append(names);
    for (const QString &name : names) {
        m_lookup.insert(name);
    }
}

bool VLBlacklist::appIsOnBlackList(const QString &fsName, const QString &path) const
{
    BundleReader bundle(path);
    return appIsOnBlackList(fsName, bundle);
}

bool VLBlacklist::appIsOnBlackList(const QString &fsName, BundleReader &bundle) const
{
    const QString path = bundle.path();
    const QString name = stringByDeletingPathExtension(fsName);
    const QString standardPath = QDir::cleanPath(path);
    const QString file = standardPath.mid(standardPath.lastIndexOf(QLatin1Char('/')) + 1);
    const QString extension = pathExtension(file);

    bool listed = m_lookup.contains(name);
    if (containsAny(name, {"Firmware", "QuickTime Player 7"})) {
        listed = true;
    }
    if (containsAny(file, {"Flash Player.prefPane", "MusicManager.prefPane", "BOINCSaver.saver"})) {
        listed = true;
    }
    if (containsAny(name, {"install", "Install", "Remove", "Removal", "Scheduler", "Setup", "Reset"})) {
        listed = true;
    }
    // Third-party widgets are what people install widgets for: only the system's own are hidden, whatever the name.
    if (extension == QLatin1String("wdgt")) {
        listed = builtInWidgets().contains(file);
    }
    if (extension == QLatin1String("ideplugin") || extension == QLatin1String("xcodeplugin") ||
        extension == QLatin1String("xcplugin") || extension == QLatin1String("dcplugin")) {
        listed = true;
    }
    if (standardPath.contains(QLatin1String("Toast 11 Titanium")) && !name.contains(QLatin1String("Toast Titanium"))) {
        listed = true;
    }
    if ((extension == QLatin1String("plugin") || extension == QLatin1String("webplugin")) &&
        !standardPath.contains(QLatin1String("Internet Plug-Ins"))) {
        listed = true;
    }
    // The property list is read only when nothing else has decided yet; the outcome is the same.
    if (!listed && isVirtualMachineApp(bundle)) {
        listed = true;
    }
    return listed;
}
