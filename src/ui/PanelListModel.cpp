#include "ui/PanelListModel.h"

int PanelListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 1;
}

QVariant PanelListModel::data(const QModelIndex &index, int role) const
{
    if (role == Qt::AccessibleDescriptionRole && index.isValid()) {
        return tr("Space updates the app or cancels its update; the menu key opens its actions");
    }
    if (role != Qt::AccessibleTextRole || !index.isValid()) {
        return AppListModel::data(index, role);
    }
    const QString name = AppListModel::data(index, Qt::DisplayRole).toString();
    const AppRef app = AppListModel::data(index, AppRole).value<AppRef>();
    switch (AppListModel::data(index, RowStateRole).value<RowState>()) {
    case RowState::Idle:
        return tr("%1, version %2, new version %3").arg(name, app->localVersion, app->vlVersion);
    case RowState::Updating:
        return tr("%1, updating to %2").arg(name, app->vlVersion);
    case RowState::Installing:
        return tr("%1, installing %2").arg(name, app->vlVersion);
    case RowState::Done:
        return tr("%1, updated to %2").arg(name, app->localVersion);
    case RowState::Failed:
        return tr("%1, update failed: %2").arg(name, AppListModel::data(index, StateTextRole).toString());
    }
    return name;
}
