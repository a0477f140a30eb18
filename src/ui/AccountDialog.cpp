#include "ui/AccountDialog.h"

#include "scan/VLMainWindowController.h"
#include "services/VLMemberAccount.h"
#include "ui/AddressFields.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace {

// The profile form's fields, in the form's order: the member's names and e-mail, then the postal address.
const QList<AccountField> &profileFields()
{
    static const QList<AccountField> fields =
        QList<AccountField>{
            {"firstname", &VLMemberAccount::firstname, QT_TRANSLATE_NOOP("AccountField", "First name")},
            {"lastname", &VLMemberAccount::lastname, QT_TRANSLATE_NOOP("AccountField", "Last name")},
            {"email_string", &VLMemberAccount::email_string, QT_TRANSLATE_NOOP("AccountField", "E-mail")},
        } +
        AddressFields::all();
    return fields;
}

} // namespace

AccountDialog::AccountDialog(VLMainWindowController &driver, QWidget *parent) : QDialog(parent), m_driver(driver)
{
    setObjectName(QStringLiteral("accountDialog"));
    setWindowTitle(tr("Velmora Account"));
    setMinimumWidth(400);
    // One page shows at a time; the hidden ones take no room, so the dialog fits the one shown.
    m_pages = {buildLoginPage(), buildSignupPage(), buildProfilePage()};
    auto *layout = new QVBoxLayout(this);
    for (QWidget *page : std::as_const(m_pages)) {
        layout->addWidget(page);
    }

    connect(&driver, &VLMainWindowController::loginEnded, this, &AccountDialog::takeLoginEnded);
    connect(&driver, &VLMainWindowController::signupEnded, this, &AccountDialog::takeSignupEnded);
    connect(&driver, &VLMainWindowController::profileSaveEnded, this, [this](const QString &message, bool) {
        setBusy(false);
        m_profileStatus->setText(message);
    });
    // Whatever signed the member in or out (a form, the stored log-in at start, Sign Out) turns the page.
    connect(&driver, &VLMainWindowController::memberChanged, this, [this](bool signedIn) {
        if (signedIn && currentPage() != Page::Profile) {
            showPage(Page::Profile);
        } else if (!signedIn && currentPage() == Page::Profile) {
            showPage(Page::Login);
        }
    });
    connect(this, &QDialog::finished, this, [this] { m_afterSignIn = nullptr; });
    showPage(driver.memberAccount().isLoggedIn ? Page::Profile : Page::Login);
}

QWidget *AccountDialog::buildLoginPage()
{
    auto *page = new QWidget(this);
    auto *form = new QFormLayout(page);
    form->addRow(new QLabel(tr("Sign in to keep your watch list and purchases."), page));
    addField(page, "email", tr("E-mail"), tr("The e-mail address you signed up with"));
    addField(page, "password", tr("Password"), tr("Your member password"))->setEchoMode(QLineEdit::Password);
    m_errorfield = addStatusLine(page, "errorfield");
    QPushButton *login = addButton(page, "loginButton", tr("Sign In"), tr("Signs in with this e-mail and password"));
    login->setDefault(true);
    QPushButton *forgot = addButton(page, "forgotPasswordButton", tr("Forgot Password?"),
                                    tr("Opens the page that resets your password in the browser"));
    QPushButton *signup =
        addButton(page, "showSignupButton", tr("Create an Account…"), tr("Shows the form that creates an account"));
    addButtonRow(page, {forgot, signup}, login);
    connect(login, &QPushButton::clicked, this, &AccountDialog::submitLogin);
    connect(forgot, &QPushButton::clicked, this, [this] {
        m_errorfield->clear();
        VLMemberAccount().forgotpassword();
    });
    connect(signup, &QPushButton::clicked, this, [this] { showPage(Page::Signup); });
    return page;
}

QWidget *AccountDialog::buildSignupPage()
{
    auto *page = new QWidget(this);
    auto *form = new QFormLayout(page);
    form->addRow(new QLabel(tr("Create a free Velmora account."), page));
    addField(page, "signupEmail", tr("E-mail"), tr("Your e-mail address, which you sign in with"));
    addField(page, "signupPassword", tr("Password"), tr("The password you will sign in with"))
        ->setEchoMode(QLineEdit::Password);
    addField(page, "signupFirstName", tr("First name"), tr("Your first name"));
    addField(page, "signupLastName", tr("Last name"), tr("Your last name"));
    m_createErrorfield = addStatusLine(page, "createErrorfield");
    QPushButton *signup = addButton(page, "signupButton", tr("Sign Up"), tr("Creates the account and signs in"));
    QPushButton *back =
        addButton(page, "showLoginButton", tr("I Have an Account"), tr("Shows the sign-in form instead"));
    addButtonRow(page, {back}, signup);
    connect(signup, &QPushButton::clicked, this, &AccountDialog::submitSignup);
    connect(back, &QPushButton::clicked, this, [this] { showPage(Page::Login); });
    return page;
}

QWidget *AccountDialog::buildProfilePage()
{
    auto *page = new QWidget(this);
    auto *form = new QFormLayout(page);
    m_memberSince = new QLabel(page);
    m_memberSince->setObjectName(QStringLiteral("created_on"));
    form->addRow(m_memberSince);
    for (const AccountField &profileField : profileFields()) {
        const QString label = profileField.title();
        addField(page, profileField.name, label, tr("Your %1 as the service keeps it").arg(label.toLower()));
    }
    m_profileStatus = addStatusLine(page, "profileStatus");
    QPushButton *save = addButton(page, "saveProfileButton", tr("Save"), tr("Sends these details to the service"));
    QPushButton *logout =
        addButton(page, "logoutButton", tr("Sign Out"), tr("Signs out and forgets the stored password"));
    addButtonRow(page, {logout}, save);
    connect(save, &QPushButton::clicked, this, &AccountDialog::submitProfile);
    connect(logout, &QPushButton::clicked, this, [this] { m_driver.logout(); });
    return page;
}

QLineEdit *AccountDialog::addField(QWidget *page, const char *name, const QString &label, const QString &description)
{
    auto *edit = new QLineEdit(page);
    edit->setObjectName(QLatin1String(name));
    edit->setAccessibleName(label);
    edit->setAccessibleDescription(description);
    static_cast<QFormLayout *>(page->layout())->addRow(label, edit);
    return edit;
}

QPushButton *AccountDialog::addButton(QWidget *page, const char *name, const QString &text, const QString &description)
{
    auto *button = new QPushButton(text, page);
    button->setObjectName(QLatin1String(name));
    button->setAccessibleName(text);
    button->setAccessibleDescription(description);
    return button;
}

void AccountDialog::addButtonRow(QWidget *page, const QList<QPushButton *> &others, QPushButton *primary)
{
    auto *row = new QHBoxLayout;
    for (QPushButton *button : others) {
        row->addWidget(button);
    }
    row->addStretch(1);
    row->addWidget(primary);
    static_cast<QFormLayout *>(page->layout())->addRow(row);
}

QLabel *AccountDialog::addStatusLine(QWidget *page, const char *name)
{
    auto *line = new QLabel(page);
    line->setObjectName(QLatin1String(name));
    line->setWordWrap(true);
    line->setAccessibleName(tr("Status"));
    static_cast<QFormLayout *>(page->layout())->addRow(line);
    return line;
}

QLineEdit *AccountDialog::field(const char *name) const
{
    return findChild<QLineEdit *>(QLatin1String(name));
}

void AccountDialog::showPage(Page page)
{
    if (page == Page::Profile) {
        fillProfile(m_driver.memberAccount());
    }
    m_page = page;
    for (qsizetype i = 0; i < m_pages.size(); ++i) {
        m_pages.at(i)->setVisible(i == static_cast<int>(page));
    }
    layout()->activate();
    resize(sizeHint());
    setBusy(false);
    const char *first[] = {"email", "signupEmail", "firstname"};
    field(first[static_cast<int>(page)])->setFocus();
}

AccountDialog::Page AccountDialog::currentPage() const
{
    return m_page;
}

void AccountDialog::signInThen(std::function<void()> next)
{
    m_afterSignIn = std::move(next);
    showPage(Page::Login);
}

bool AccountDialog::continueAfterSignIn()
{
    if (!m_afterSignIn) {
        return false;
    }
    const std::function<void()> next = std::exchange(m_afterSignIn, nullptr);
    close();
    next();
    return true;
}

void AccountDialog::setBusy(bool busy)
{
    m_pages.at(static_cast<int>(m_page))->setEnabled(!busy);
}

void AccountDialog::submitLogin()
{
    m_errorfield->clear();
    setBusy(true);
    m_driver.login(field("email")->text(), field("password")->text());
}

void AccountDialog::submitSignup()
{
    m_createErrorfield->clear();
    setBusy(true);
    m_driver.createAccount(field("signupEmail")->text(), field("signupPassword")->text(),
                           field("signupFirstName")->text(), field("signupLastName")->text());
}

void AccountDialog::submitProfile()
{
    m_profileStatus->clear();
    VLMemberAccount form = m_driver.memberAccount();
    for (const AccountField &profileField : profileFields()) {
        form.*profileField.value = field(profileField.name)->text();
    }
    setBusy(true);
    m_driver.saveAccountInfo(form);
}

void AccountDialog::takeLoginEnded(const VLMemberAccount &account)
{
    if (account.isLoggedIn) {
        field("password")->clear();
        if (!continueAfterSignIn()) {
            showPage(Page::Profile);
        }
        return;
    }
    setBusy(false);
    // A service that did not answer leaves the account's status line empty.
    m_errorfield->setText(account.errorfield.isEmpty() ? tr("The service did not answer; try again later.")
                                                       : account.errorfield);
    field("email")->setFocus();
}

void AccountDialog::takeSignupEnded(const VLMemberAccount &account)
{
    if (account.isLoggedIn) {
        field("signupPassword")->clear();
        if (!continueAfterSignIn()) {
            showPage(Page::Profile);
        }
        return;
    }
    setBusy(false);
    m_createErrorfield->setText(account.createErrorfield);
}

void AccountDialog::fillProfile(const VLMemberAccount &account)
{
    for (const AccountField &profileField : profileFields()) {
        field(profileField.name)->setText(account.*profileField.value);
    }
    m_memberSince->setText(account.created_on.isEmpty()
                               ? tr("Signed in as %1").arg(account.fullname)
                               : tr("Signed in as %1, a member since %2").arg(account.fullname, account.created_on));
    m_profileStatus->clear();
}
