#include "services/VLMemberAccount.h"

#include "model/StringUtils.h"
#include "platform/DesktopOpener.h"
#include "platform/HttpCookieJar.h"
#include "platform/Log.h"
#include "platform/SystemFacts.h"
#include "platform/UserFeedback.h"
#include "platform/VLSettings.h"
#include "platform/WebRequest.h"
#include "services/VLGoogleTracking.h"
#include "services/VLKeychain.h"
#include "services/VLMemberProfileSaver.h"

#include <QJsonDocument>
#include <QNetworkCookie>
#include <QRegularExpression>

namespace {

const QString keychainName = QString::fromLatin1(VLMemberAccount::kKeychainName);
const QString internetPassword = QString::fromLatin1(VLKeychain::kInternetPassword);

QString serviceURL(const QString &path)
{
    return VLSettings().hostURL(SettingKey::serviceHost, QStringLiteral("https")) + path;
}

// A synchronous GET of the service; the body, empty when no reply came.
QByteArray fetch(const QString &path, const QString &logName)
{
    const WebResult result = sendWebRequest(WebRequest::get(QUrl(serviceURL(path)), logName));
    return result.body;
}

QString text(const QJsonObject &dict, const char *name)
{
    return VLMemberAccount::getJSONItemWithName(QString::fromLatin1(name), dict).toString();
}

// Nullopt for a value that is missing, null or not base64.
std::optional<QString> decodedBase64(const QJsonObject &dict, const char *name)
{
    const QString value = text(dict, name);
    if (value.isNull()) {
        return std::nullopt;
    }
    const auto bytes = QByteArray::fromBase64Encoding(value.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!bytes) {
        return std::nullopt;
    }
    return QString::fromUtf8(*bytes);
}

} // namespace

VLMemberAccount::VLMemberAccount() : memberID(lastLoginMemberID())
{
    showAlert = [](const QString &message, bool) { UserFeedback::current().showAlert(message, QString()); };
}

int VLMemberAccount::lastLoginMemberID()
{
    const int id = VLSettings().value(QString::fromLatin1(SettingKey::lastlogin)).toInt();
    return id == 0 ? -1 : id;
}

QString VLMemberAccount::lastLoginName()
{
    return VLSettings().value(QString::fromLatin1(SettingKey::firstName)).toString();
}

QString VLMemberAccount::serviceCookieDomain()
{
    return QUrl(VLSettings().hostURL(SettingKey::serviceHost)).host();
}

QVariant VLMemberAccount::getJSONItemWithName(const QString &name, const QJsonObject &dict)
{
    const QJsonValue value = dict.value(name);
    if (value.isUndefined() || value.isNull()) {
        return QVariant();
    }
    return value.toVariant();
}

bool VLMemberAccount::isValidEmail(const QString &text)
{
    // The top-level domain may have four letters at most: the service has always refused longer ones.
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(QStringLiteral("[A-Z0-9a-z\\._%+-]+@([A-Za-z0-9-]+\\.)+[A-Za-z]{2,4}")));
    return pattern.match(text).hasMatch();
}

void VLMemberAccount::loadAccountFromKeychain()
{
    for (const QVariantMap &entry : VLKeychain::accountsForLabel(keychainName)) {
        if (entry.value(QStringLiteral("labl")).toString() != keychainName) {
            continue;
        }
        const QString account = entry.value(QStringLiteral("acct")).toString();
        const QString stored = VLKeychain::passwordForLabel(keychainName, account);
        if (!account.isEmpty()) {
            email = account;
            email_string = account;
        }
        if (!stored.isNull()) {
            password = stored;
        }
    }
}

void VLMemberAccount::loadAccountFromCookie()
{
    if (memberID != -1) {
        return;
    }
    const QString domain = serviceCookieDomain();
    for (const QNetworkCookie &cookie : HttpCookieJar::shared().cookies()) {
        if (!cookie.domain().contains(domain) || cookie.name() != "login") {
            continue;
        }
        // The pair is split at the encoded colon as it stands; the value is not decoded first.
        const QStringList parts = QString::fromLatin1(cookie.value()).split(QStringLiteral("%3A"));
        memberID = parts.value(0).toInt();
        email = parts.value(0);
        email_string = email;
        password = parts.value(1);
        return;
    }
}

void VLMemberAccount::saveAccountToKeychain()
{
    deleteKeychainEntry();
    SSKeychainError error;
    if (!VLKeychain::setPasswordForServiceAccountDesc(password, keychainName, email, internetPassword, &error)) {
        vlLog(QStringLiteral("keychain update error: %1").arg(error.localizedDescription));
    }
}

void VLMemberAccount::deleteKeychainEntry()
{
    for (const QVariantMap &entry : VLKeychain::accountsForLabel(keychainName)) {
        SSKeychainError error;
        if (!VLKeychain::deletePasswordForLabel(entry.value(QStringLiteral("labl")).toString(),
                                                entry.value(QStringLiteral("acct")).toString(), &error)) {
            vlLog(QStringLiteral("keychain update error: %1").arg(error.localizedDescription));
        }
    }
}

QString VLMemberAccount::machineSegments() const
{
    const VLSettings settings;
    return QStringLiteral("/vld/6.0.4/c/") + urlEncodeValue(settings.stringValue(SettingKey::serial)) +
           QStringLiteral("/os/") + urlEncodeValue(SystemFacts::operatingSystemVersionString()) +
           QStringLiteral("/r/") + QString::number(SystemFacts::physicalMemoryMiB()) + QStringLiteral("/cpu/") +
           QString::number(SystemFacts::processorCount()) + QStringLiteral("/uuid/") +
           urlEncodeValue(settings.stringValue(SettingKey::penguin));
}

void VLMemberAccount::login()
{
    errorfield.clear();
    if (email.isEmpty() || password.isEmpty()) {
        errorfield = tr("Please enter email and password");
        firstResponder = QStringLiteral("email");
        return;
    }
    QString path;
    if (email.contains(QLatin1Char('@'))) {
        path = QStringLiteral("/vld6member/jlogincheck2/u/") + md5HexHash(email) + QStringLiteral("/p/") +
               md5HexHash(password);
    } else {
        // The fields carry the cookie's pair, sent as they stand.
        path = QStringLiteral("/vld6member/jlogincheckcookie/u/") + email + QStringLiteral("/p/") + password;
        VLGoogleTracking::trackProgramEvent(QStringLiteral("MEMBER_LOGIN_COOKIE_ATTEMPT"), email, email);
    }
    const QByteArray data = fetch(path + machineSegments(), QStringLiteral("Login"));
    if (data.isEmpty()) {
        return;
    }
    QJsonParseError parseError;
    const QJsonDocument reply = QJsonDocument::fromJson(data, &parseError);
    if (parseError.error != QJsonParseError::NoError || !reply.isObject() ||
        reply.object().contains(QStringLiteral("error"))) {
        failLogin(parseError.error != QJsonParseError::NoError ? parseError.errorString() : QString());
        return;
    }
    takeLoginReply(reply.object());
    saveAccountToKeychain();
    if (hideLoginViewShowUser) {
        hideLoginViewShowUser();
    }
}

void VLMemberAccount::failLogin(const QString &parseError)
{
    if (!parseError.isEmpty()) {
        vlLog(QStringLiteral("login error %1").arg(parseError));
    }
    errorfield = tr("Incorrect email or password");
    firstResponder = QStringLiteral("email");
    vlLog(QStringLiteral("login incorrect"));
    const QString attempted = email;
    reset();
    VLGoogleTracking::trackProgramEvent(QStringLiteral("MEMBER_LOGIN_FAIL"), attempted, attempted);
}

void VLMemberAccount::takeLoginReply(const QJsonObject &reply)
{
    firstname = text(reply, "first");
    lastname = text(reply, "last");
    fullname = QStringLiteral("%1 %2").arg(firstname, lastname);
    memberID = getJSONItemWithName(QStringLiteral("id"), reply).toInt();
    address = text(reply, "address");
    city = text(reply, "city");
    state = text(reply, "state");
    zip = text(reply, "zip");
    country = text(reply, "country");
    created_on = text(reply, "created_on");
    const QString id = QString::number(memberID);
    VLGoogleTracking::trackProgramEvent(QStringLiteral("MEMBER_LOGIN"), id, id);
    isLoggedIn = true;
    rememberMember();
    // The reply carries the real credentials, which is how a cookie log-in learns them.
    const std::optional<QString> replyEmail = decodedBase64(reply, "email");
    const std::optional<QString> replyPassword = decodedBase64(reply, "password");
    if (!replyEmail || !replyPassword) {
        vlLog(QStringLiteral("the log-in reply carries no valid credentials; the ones typed are kept"));
        return;
    }
    email = *replyEmail;
    email_string = *replyEmail;
    password = *replyPassword;
}

void VLMemberAccount::rememberMember() const
{
    VLSettings settings;
    settings.setValue(QString::fromLatin1(SettingKey::lastlogin), memberID);
    settings.setValue(QString::fromLatin1(SettingKey::firstName), firstname);
    settings.sync();
}

QString VLMemberAccount::campaignCookie() const
{
    static const QStringList excluded = {QStringLiteral("www1"),  QStringLiteral("www2"),    QStringLiteral("www3"),
                                         QStringLiteral("stage"), QStringLiteral("sandbox"), QStringLiteral("deals")};
    const QString domain = serviceCookieDomain();
    QString value;
    for (const QNetworkCookie &cookie : HttpCookieJar::shared().cookies()) {
        if (!cookie.domain().contains(domain)) {
            continue;
        }
        const bool other = std::any_of(excluded.cbegin(), excluded.cend(), [&](const QString &label) {
            return cookie.domain().contains(label + QLatin1Char('.') + domain);
        });
        if (!other && cookie.name() == "__utmz") {
            value = QString::fromUtf8(cookie.value());
        }
    }
    return value;
}

void VLMemberAccount::createAccount()
{
    createErrorfield.clear();
    if (signupEmail.isEmpty() || signupPassword.isEmpty() || signupFirstName.isEmpty() || signupLastName.isEmpty()) {
        createErrorfield = tr("Please enter required account info");
        return;
    }
    if (!isValidEmail(signupEmail)) {
        createErrorfield = tr("Invalid Email address");
        return;
    }
    createErrorfield = tr("Processing...");
    QString path = QStringLiteral("/vld6member/signup/e/") + urlEncodeValue(signupEmail) + QStringLiteral("/p/") +
                   urlEncodeValue(signupPassword) + QStringLiteral("/f/") + urlEncodeValue(signupFirstName) +
                   QStringLiteral("/l/") + urlEncodeValue(signupLastName);
    const QString campaign = campaignCookie();
    if (!campaign.isEmpty()) {
        path += QStringLiteral("/utmz/") + base64Encoding(campaign.toUtf8());
    }
    const QByteArray data = fetch(path, QStringLiteral("Signup"));
    if (data.isEmpty()) {
        createErrorfield = tr("Server Error 625");
        return;
    }
    const QJsonDocument reply = QJsonDocument::fromJson(data);
    if (!reply.isObject()) {
        createErrorfield = tr("Server Error 624");
        return;
    }
    const QJsonObject dict = reply.object();
    if (dict.contains(QStringLiteral("error"))) {
        createErrorfield = dict.value(QStringLiteral("error")).toVariant().toString();
        return;
    }
    // The id may come as a number or as its decimal text.
    bool numeric = false;
    const int replyId = getJSONItemWithName(QStringLiteral("id"), dict).toInt(&numeric);
    if (!numeric) {
        createErrorfield = tr("Error 626");
        return;
    }
    isLoggedIn = true;
    firstname = text(dict, "first");
    lastname = text(dict, "last");
    memberID = replyId;
    fullname = QStringLiteral("%1 %2").arg(firstname, lastname);
    password = signupPassword;
    email = signupEmail;
    email_string = signupEmail;
    const QString id = QString::number(memberID);
    VLGoogleTracking::trackProgramEvent(QStringLiteral("MEMBER_SIGNUP"), id, id);
    if (hideSignupViewShowUser) {
        hideSignupViewShowUser();
    }
    saveAccountToKeychain();
    rememberMember();
}

VLMemberProfileSaver *VLMemberAccount::saveAccountInfo()
{
    if (!isValidEmail(email_string)) {
        showAlert(tr("Invalid Email address"), true);
        firstResponder = QStringLiteral("email");
        return nullptr;
    }
    if (firstname.isEmpty() || lastname.isEmpty() || email_string.isEmpty()) {
        showAlert(tr("Name and Email address are required"), true);
        firstResponder = firstname.isEmpty() ? QStringLiteral("firstname") : QStringLiteral("lastname");
        return nullptr;
    }
    email = email_string;
    saveAccountToKeychain();
    const QJsonObject profile = {{QStringLiteral("fname"), firstname},
                                 {QStringLiteral("lname"), lastname},
                                 {QStringLiteral("email"), email_string},
                                 {QStringLiteral("address"), address},
                                 {QStringLiteral("city"), city},
                                 {QStringLiteral("state"), state},
                                 {QStringLiteral("zip"), zip},
                                 {QStringLiteral("country"), country},
                                 {QStringLiteral("member_id"), memberID}};
    // Not URL-encoded: the service reads the JSON as it stands.
    VLMemberProfileSaver *saver =
        postData(QStringLiteral("a=") + QString::fromUtf8(QJsonDocument(profile).toJson(QJsonDocument::Compact)));
    showAlert(tr("Account information saved"), false);
    return saver;
}

VLMemberProfileSaver *VLMemberAccount::postData(const QString &body)
{
    auto *saver = new VLMemberProfileSaver;
    saver->releaseWhenDone();
    saver->saveProfile(body);
    return saver;
}

QString VLMemberAccount::forgotpassword()
{
    errorfield.clear();
    const QString url =
        VLSettings().hostURL(SettingKey::siteHost, QStringLiteral("https")) + QStringLiteral("/member/forgot-password");
    if (DesktopOpener::hasDisplay()) {
        DesktopOpener::open(url);
    }
    return url;
}

void VLMemberAccount::logout()
{
    VLGoogleTracking::trackProgramEvent(QStringLiteral("MEMBER_LOGOUT"));
    reset();
}

void VLMemberAccount::reset()
{
    isLoggedIn = false;
    VLSettings settings;
    settings.remove(QString::fromLatin1(SettingKey::lastlogin));
    settings.remove(QString::fromLatin1(SettingKey::firstName));
    settings.sync();
    email.clear();
    password.clear();
    deleteKeychainEntry();
}
