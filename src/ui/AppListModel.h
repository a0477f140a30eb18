#pragma once

// A list of apps as a table model over shared records (never a widget per row): the window's list and the panel's.
// Columns: the app, its installed version, the new version and its date; a running update's progress and what the
// row's update is doing are roles the delegates draw.

#include "scan/AppList.h"

#include <QAbstractTableModel>
#include <QHash>

#include <QIcon>
#include <functional>

class UpdateJob;

class AppListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Name, Installed, Available, Date, ColumnCount };
    enum Role { AppRole = Qt::UserRole + 1, ProgressRole, StateTextRole, RowStateRole };
    // What a row shows of its update: none to run (Idle), queued or downloading, installing, done, failed.
    enum class RowState { Idle, Updating, Installing, Done, Failed };
    Q_ENUM(RowState)

    explicit AppListModel(QObject *parent = nullptr);

    // The same records in the same order only tell the views to draw their rows again: a view keeps its place.
    void setApps(const AppList &apps);
    const AppList &apps() const { return m_apps; }
    AppRef appAt(int row) const;
    int rowOf(const VLApp *app) const;
    // A running update's fraction (0..1), or -1 when none runs.
    void setProgress(const VLApp *app, double fraction);
    void refreshApp(const VLApp *app);
    // The record's running or last update, or null: what its state column says.
    void setJobLookup(std::function<const UpdateJob *(const VLApp *)> lookup) { m_jobFor = std::move(lookup); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // job: the record's running or last update, or null.
    static RowState rowStateOf(const VLApp &app, const UpdateJob *job);

private:
    QIcon iconOf(const VLApp &app) const;
    QString stateText(const VLApp &app) const;
    const UpdateJob *jobFor(const VLApp &app) const { return m_jobFor ? m_jobFor(&app) : nullptr; }

    AppList m_apps;
    QHash<const VLApp *, int> m_rows;
    QHash<const VLApp *, double> m_progress;
    mutable QHash<QString, QIcon> m_icons;
    std::function<const UpdateJob *(const VLApp *)> m_jobFor;
};
