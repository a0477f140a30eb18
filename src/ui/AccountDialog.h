#pragma once

// The member account's forms: log-in, sign-up, and once signed in the profile with log-out. The fields carry the
// account's field names as object names; what the service or the account's checks say shows in each form's status
// line. Every exchange runs on the member session's thread; the forms wait for its answer with their buttons off.

#include <QDialog>

#include <functional>

class QLabel;
class QLineEdit;
class QPushButton;
class VLMainWindowController;
class VLMemberAccount;

class AccountDialog : public QDialog
{
    Q_OBJECT

public:
    enum class Page { Login, Signup, Profile };
    Q_ENUM(Page)

    explicit AccountDialog(VLMainWindowController &driver, QWidget *parent = nullptr);

    void showPage(Page page);
    Page currentPage() const;
    // The log-in form, for something that needs a member: a sign-in closes the dialog and runs next; closing the
    // dialog first drops it.
    void signInThen(std::function<void()> next);

private:
    QWidget *buildLoginPage();
    QWidget *buildSignupPage();
    QWidget *buildProfilePage();
    QLineEdit *addField(QWidget *page, const char *name, const QString &label, const QString &description);
    QPushButton *addButton(QWidget *page, const char *name, const QString &text, const QString &description);
    // The page's buttons in one row, the primary one at the right.
    void addButtonRow(QWidget *page, const QList<QPushButton *> &others, QPushButton *primary);
    QLabel *addStatusLine(QWidget *page, const char *name);
    QLineEdit *field(const char *name) const;
    void setBusy(bool busy);
    void submitLogin();
    void submitSignup();
    void submitProfile();
    void takeLoginEnded(const VLMemberAccount &account);
    void takeSignupEnded(const VLMemberAccount &account);
    void fillProfile(const VLMemberAccount &account);
    // After a sign-in: closes the dialog and runs what waited for it, if anything did.
    bool continueAfterSignIn();

    VLMainWindowController &m_driver;
    QList<QWidget *> m_pages; // by Page
    Page m_page = Page::Login;
    QLabel *m_errorfield = nullptr;
    QLabel *m_createErrorfield = nullptr;
    QLabel *m_profileStatus = nullptr;
    QLabel *m_memberSince = nullptr;
    std::function<void()> m_afterSignIn;
};
