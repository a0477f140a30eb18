#include "ui/CrashReportDialog.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

void CrashReportDialog::askToSendCrashReport(const CrashReportQuestion &question,
                                             std::function<void(std::optional<QString> details)> answer)
{
    auto *dialog = new QDialog;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setObjectName(QStringLiteral("crashReportDialog"));
    dialog->setWindowTitle(question.message);
    auto *layout = new QVBoxLayout(dialog);

    auto *text = new QLabel(question.informativeText, dialog);
    text->setWordWrap(true);
    layout->addWidget(text);

    auto *report = new QPlainTextEdit(QString::fromUtf8(question.report), dialog);
    report->setReadOnly(true);
    report->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    report->setAccessibleName(QObject::tr("The crash report"));
    report->setAccessibleDescription(QObject::tr("Exactly what is sent, besides what you write below"));
    layout->addWidget(report, 1);

    auto *detailsLabel = new QLabel(QObject::tr("What were you doing when it happened? (optional)"), dialog);
    auto *details = new QPlainTextEdit(dialog);
    details->setObjectName(QStringLiteral("crashDetails"));
    details->setAccessibleName(detailsLabel->text());
    details->setMaximumHeight(90);
    detailsLabel->setBuddy(details);
    layout->addWidget(detailsLabel);
    layout->addWidget(details);

    auto *buttons = new QDialogButtonBox(dialog);
    buttons->addButton(QObject::tr("Send Report"), QDialogButtonBox::AcceptRole);
    buttons->addButton(QObject::tr("Don't Send"), QDialogButtonBox::RejectRole);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    layout->addWidget(buttons);

    // Closing the window is a refusal too: nothing leaves the machine without the user's word.
    QObject::connect(dialog, &QDialog::finished, dialog, [answer = std::move(answer), details](int result) {
        answer(result == QDialog::Accepted ? std::optional<QString>(details->toPlainText()) : std::nullopt);
    });
    dialog->resize(640, 480);
    dialog->open();
}
