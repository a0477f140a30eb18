#pragma once

// One row of the panel: the app's icon, name, installed and new version, and on the right what its update is
// doing: an Update button, a progress bar with a cancel button, the done mark, or the failure text.

#include "scan/AppList.h"

#include <QWidget>

class QLabel;
class QProgressBar;
class QStackedWidget;
class QToolButton;
class QPushButton;

class UpdateJob;

class PanelAppRow : public QWidget
{
    Q_OBJECT

public:
    enum class State { Idle, Updating, Installing, Done, Failed };

    explicit PanelAppRow(AppRef app, QWidget *parent = nullptr);

    const AppRef &app() const { return m_app; }
    // Reads the record's update state again; updating: an update of this app is queued or running.
    // job: the record's running or last update, or null.
    void refresh(const UpdateJob *job);
    void setProgress(double fraction);
    State state() const { return m_state; }

    static State stateOf(const VLApp &app, const UpdateJob *job);
    static QIcon iconFor(const VLApp &app);

signals:
    void updateRequested(const AppRef &app);
    void cancelRequested(const AppRef &app);
    void menuRequested(const AppRef &app, const QPoint &globalPos);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    AppRef m_app;
    State m_state = State::Idle;
    QLabel *m_name;
    QLabel *m_versions;
    QStackedWidget *m_action;
    QPushButton *m_update;
    QProgressBar *m_progress;
    QToolButton *m_cancel;
    QLabel *m_done;
    QLabel *m_failure;
    QToolButton *m_menu;
};
