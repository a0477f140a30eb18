#pragma once

// The deals cart: one deal, the postal address it is ordered with (the member's, as the profile holds it), and Buy
// Now, which sends the order through the member session and says whether the deals host took it.

#include "scan/AppList.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class VLMainWindowController;

class CartDialog : public QDialog
{
    Q_OBJECT

public:
    CartDialog(VLMainWindowController &driver, const AppRef &deal, QWidget *parent = nullptr);

private:
    void buyNow();
    void takeOrdered(qint64 promoID, bool taken);

    VLMainWindowController &m_driver;
    AppRef m_deal;
    QList<QLineEdit *> m_address;
    QPushButton *m_buy;
    QLabel *m_status;
};
