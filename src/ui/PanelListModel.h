#pragma once

// The panel's list: the records' list model, with each row read out whole (name, versions and what its update is
// doing) to a screen reader, since the panel shows a single painted column.

#include "ui/AppListModel.h"

class PanelListModel : public AppListModel
{
    Q_OBJECT

public:
    using AppListModel::AppListModel;

    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
};
