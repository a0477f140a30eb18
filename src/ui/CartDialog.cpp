#include "ui/CartDialog.h"

#include "model/VLApp.h"
#include "scan/VLMainWindowController.h"
#include "services/VLMemberAccount.h"
#include "ui/AddressFields.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

CartDialog::CartDialog(VLMainWindowController &driver, const AppRef &deal, QWidget *parent)
    : QDialog(parent), m_driver(driver), m_deal(deal), m_buy(new QPushButton(tr("Buy Now"), this)),
      m_status(new QLabel(this))
{
    setObjectName(QStringLiteral("cartDialog"));
    setWindowTitle(tr("Buy %1").arg(deal->displayName));
    auto *form = new QFormLayout(this);
    auto *title = new QLabel(deal->deal_price.isEmpty() ? deal->displayName
                                                        : tr("%1 for %2").arg(deal->displayName, deal->deal_price),
                             this);
    title->setObjectName(QStringLiteral("dealTitle"));
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    setMinimumWidth(360);
    form->addRow(title);
    const VLMemberAccount &member = driver.memberAccount();
    for (const AccountField &field : AddressFields::all()) {
        auto *edit = new QLineEdit(member.*field.value, this);
        edit->setObjectName(QLatin1String(field.name));
        edit->setAccessibleName(field.title());
        edit->setAccessibleDescription(tr("Where the order is sent"));
        form->addRow(field.title(), edit);
        m_address.append(edit);
    }
    m_status->setObjectName(QStringLiteral("cartStatus"));
    m_status->setAccessibleName(tr("Status"));
    m_status->setWordWrap(true);
    form->addRow(m_status);
    m_buy->setObjectName(QStringLiteral("buyNowButton"));
    m_buy->setAccessibleName(m_buy->text());
    m_buy->setAccessibleDescription(tr("Orders this deal for your account"));
    m_buy->setDefault(true);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_buy);
    form->addRow(buttons);

    connect(m_buy, &QPushButton::clicked, this, &CartDialog::buyNow);
    connect(&driver, &VLMainWindowController::dealOrdered, this, &CartDialog::takeOrdered);
}

void CartDialog::buyNow()
{
    VLMemberAccount form;
    for (qsizetype i = 0; i < m_address.size(); ++i) {
        form.*AddressFields::all().at(i).value = m_address.at(i)->text();
    }
    m_buy->setEnabled(false);
    m_status->setText(tr("Sending the order…"));
    m_driver.buyDeal(m_deal->deal_id.toLongLong(), form);
}

void CartDialog::takeOrdered(qint64 promoID, bool taken)
{
    if (promoID != m_deal->deal_id.toLongLong()) {
        return;
    }
    m_buy->setEnabled(!taken);
    m_status->setText(taken ? tr("Ordered. The purchase shows under Purchases once the service has it.")
                            : tr("The deals host did not take the order; try again later."));
}
