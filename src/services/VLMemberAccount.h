#pragma once

// The one member who may be signed in to the service: log-in by e-mail and password, log-in from the site's
// "login" cookie, sign-up, the profile, log-out and the forgotten-password page. The form fields are plain values
// here (a front end binds them to its widgets); status texts go to errorfield and createErrorfield, alerts through
// showAlert. login and createAccount wait for the service on the calling thread, so they belong on a worker thread.
// The password lives in the fields and the keychain only.

#include <QCoreApplication>
#include <QJsonObject>
#include <QString>
#include <QVariant>

#include <functional>

class VLMemberProfileSaver;

class VLMemberAccount
{
    Q_DECLARE_TR_FUNCTIONS(VLMemberAccount)

public:
    // The keychain item's service and label.
    static constexpr char kKeychainName[] = "Velmora Desktop";

    VLMemberAccount();

    bool isLoggedIn = false;
    int memberID = -1;
    QString firstname;
    QString lastname;
    QString fullname;
    QString email_string;
    QString address;
    QString city;
    QString state;
    QString zip;
    QString country;
    QString created_on;

    // The log-in form; during a cookie log-in they carry the cookie's member id and token.
    QString email;
    QString password;
    // The sign-up form.
    QString signupEmail;
    QString signupPassword;
    QString signupFirstName;
    QString signupLastName;
    QString errorfield;
    QString createErrorfield;
    // The field that would take the focus after a failure ("email", "firstname", ...); "" when none.
    QString firstResponder;

    // What the owning window does after a log-in or a sign-up.
    std::function<void()> hideLoginViewShowUser;
    std::function<void()> hideSignupViewShowUser;
    // A modal alert: critical, or informational; UserFeedback by default.
    std::function<void(const QString &message, bool critical)> showAlert;

    void login();
    void loadAccountFromKeychain();
    // Only while the member id is unknown (-1).
    void loadAccountFromCookie();
    void saveAccountToKeychain();
    void deleteKeychainEntry();
    void createAccount();
    // Checks the profile fields and posts them; null when a check failed (the alert says which).
    VLMemberProfileSaver *saveAccountInfo();
    // A new saver posting body; it deletes itself when its exchange ends.
    VLMemberProfileSaver *postData(const QString &body);
    // Returns the page's address; opened when a desktop session is there.
    QString forgotpassword();
    void logout();
    void reset();

    static bool isValidEmail(const QString &text);
    // The value unless it is missing or JSON null.
    static QVariant getJSONItemWithName(const QString &name, const QJsonObject &dict);
    static int lastLoginMemberID();
    static QString lastLoginName();
    // The host part of the "serviceHost" setting: cookies of that domain belong to the service.
    static QString serviceCookieDomain();

private:
    QString machineSegments() const;
    void failLogin(const QString &parseError);
    void takeLoginReply(const QJsonObject &reply);
    void rememberMember() const;
    QString campaignCookie() const;
};

// Member copies travel between the member session's thread and the UI's.
Q_DECLARE_METATYPE(VLMemberAccount)
