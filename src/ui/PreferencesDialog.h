#pragma once

// The preferences: every setting a user changes, each written the moment it is ticked, so the tray item, the login
// item and the lists follow at once (through VLSettingsNotifier).

#include <QDialog>

class PreferencesDialog : public QDialog
{
    Q_OBJECT

public:
    explicit PreferencesDialog(QWidget *parent = nullptr);

    // The boolean settings shown, in order.
    static QStringList shownKeys();
};
