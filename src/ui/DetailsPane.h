#pragma once

// The window's right side: one app's icon, name, versions and release notes, and its choices: update, ignore, set
// to current, don't check, the watch list, report a problem and share; for a deal, buying it.

#include "scan/AppList.h"

#include <QWidget>

class IconView;
class QCheckBox;
class QLabel;
class QPushButton;
class QTextBrowser;

class DetailsPane : public QWidget
{
    Q_OBJECT

public:
    explicit DetailsPane(QWidget *parent = nullptr);

    void showApp(const AppRef &app, bool memberSignedIn, bool updating);
    const AppRef &app() const { return m_app; }

signals:
    void updateRequested(const AppRef &app);
    void cancelRequested(const AppRef &app);
    void ignoreToggled(const AppRef &app, bool ignored);
    void currentToggled(const AppRef &app, bool current);
    void dontCheckToggled(const AppRef &app, bool dontCheck);
    void watchListToggled(const AppRef &app, bool onList);
    void reportRequested(const AppRef &app);
    void shareRequested(const AppRef &app);
    void buyRequested(const AppRef &app);

private:
    QCheckBox *addChoice(const QString &title, const QString &description);

    AppRef m_app;
    IconView *m_icon;
    QLabel *m_name;
    QLabel *m_versions;
    QTextBrowser *m_notes;
    QPushButton *m_update;
    QCheckBox *m_ignore;
    QCheckBox *m_current;
    QCheckBox *m_dontCheck;
    QCheckBox *m_watchList;
    QPushButton *m_report;
    QPushButton *m_share;
    QPushButton *m_buy;
    QWidget *m_choices;
};
