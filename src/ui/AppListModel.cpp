#include "ui/AppListModel.h"

#include "install/UpdateJob.h"

#include "ui/AppIcon.h"

AppListModel::AppListModel(QObject *parent) : QAbstractTableModel(parent) {}

void AppListModel::setApps(const AppList &apps)
{
    if (apps == m_apps) {
        if (!m_apps.isEmpty()) {
            emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
        }
        return;
    }
    beginResetModel();
    m_apps = apps;
    m_rows.clear();
    for (int row = 0; row < m_apps.size(); ++row) {
        m_rows.insert(m_apps.at(row).get(), row);
    }
    endResetModel();
}

AppRef AppListModel::appAt(int row) const
{
    return row >= 0 && row < m_apps.size() ? m_apps.at(row) : AppRef();
}

int AppListModel::rowOf(const VLApp *app) const
{
    return m_rows.value(app, -1);
}

void AppListModel::setProgress(const VLApp *app, double fraction)
{
    if (fraction < 0) {
        m_progress.remove(app);
    } else {
        m_progress.insert(app, fraction);
    }
    refreshApp(app);
}

void AppListModel::refreshApp(const VLApp *app)
{
    const int row = rowOf(app);
    if (row >= 0) {
        emit dataChanged(index(row, 0), index(row, columnCount() - 1));
    }
}

int AppListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_apps.size());
}

int AppListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QIcon AppListModel::iconOf(const VLApp &app) const
{
    // Icons are read once per record and kept: a scroll through thousands of rows must not touch the disk.
    const QString key = app.digestString.isEmpty() ? app.localPath : app.digestString;
    auto found = m_icons.constFind(key);
    if (found == m_icons.cend()) {
        found = m_icons.insert(key, AppIcon::iconFor(app));
    }
    return *found;
}

QString AppListModel::stateText(const VLApp &app) const
{
    const UpdateJob *job = jobFor(app);
    switch (job ? job->status() : UpdateStatus::Done) {
    case UpdateStatus::Installing:
        return tr("Installing");
    case UpdateStatus::Queued:
    case UpdateStatus::Downloading:
        return tr("Downloading");
    case UpdateStatus::Failed:
        return job->failMessage();
    case UpdateStatus::Done:
    case UpdateStatus::Cancelled:
        break;
    }
    return QString();
}

QVariant AppListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const VLApp &app = *m_apps.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        switch (index.column()) {
        case Name:
            return app.displayName.isEmpty() ? app.name : app.displayName;
        case Installed:
            return app.localVersion == QLatin1String("-") ? QString() : app.localVersion;
        case Available:
            return app.vlVersion == QLatin1String("-") ? QString() : app.vlVersion;
        case Date:
            return app.vlDate == QLatin1String("-") ? QString() : app.vlDate;
        }
        break;
    case Qt::DecorationRole:
        return index.column() == Name ? QVariant(iconOf(app)) : QVariant();
    case Qt::ToolTipRole:
        return index.column() == Name ? QVariant(app.localPath) : QVariant();
    case AppRole:
        return QVariant::fromValue(m_apps.at(index.row()));
    case ProgressRole:
        return m_progress.value(&app, -1.0);
    case StateTextRole:
        return stateText(app);
    case RowStateRole:
        return QVariant::fromValue(rowStateOf(app, jobFor(app)));
    default:
        break;
    }
    return {};
}

AppListModel::RowState AppListModel::rowStateOf(const VLApp &app, const UpdateJob *job)
{
    switch (job ? job->status() : UpdateStatus::Done) {
    case UpdateStatus::Installing:
        return RowState::Installing;
    case UpdateStatus::Queued:
    case UpdateStatus::Downloading:
        return RowState::Updating;
    case UpdateStatus::Failed:
        return RowState::Failed;
    case UpdateStatus::Done:
    case UpdateStatus::Cancelled:
        break;
    }
    if (!app.isOutdated && app.lastupdated.isValid()) {
        return RowState::Done;
    }
    return RowState::Idle;
}

QVariant AppListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
    case Name:
        return tr("App");
    case Installed:
        return tr("Installed");
    case Available:
        return tr("Available");
    case Date:
        return tr("Released");
    }
    return {};
}
