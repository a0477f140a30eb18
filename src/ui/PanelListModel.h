#pragma once

// The panel's list: the records' list model with the one column the panel paints, each row read out whole (name,
// versions and what its update is doing) to a screen reader.

#include "ui/AppListModel.h"

class PanelListModel : public AppListModel
{
    Q_OBJECT

public:
    using AppListModel::AppListModel;

    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
};
