#include "ui/AppRowDelegate.h"

#include "ui/AppListModel.h"
#include "ui/RowColors.h"

#include <QApplication>
#include <QPainter>

void AppRowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const double progress = index.data(AppListModel::ProgressRole).toDouble();
    const QString state = index.data(AppListModel::StateTextRole).toString();
    if (index.column() != AppListModel::Available || (progress < 0 && state.isEmpty())) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    // The cell's background and selection without its text.
    QStyleOptionViewItem cell(option);
    initStyleOption(&cell, index);
    cell.text.clear();
    QApplication::style()->drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);
    if (progress >= 0) {
        QStyleOptionProgressBar bar;
        bar.rect = option.rect.adjusted(4, 4, -4, -4);
        bar.minimum = 0;
        bar.maximum = progress > 1.0 ? 0 : 1000;
        bar.progress = progress > 1.0 ? 0 : static_cast<int>(progress * 1000);
        bar.state = option.state | QStyle::State_Horizontal;
        QApplication::style()->drawControl(QStyle::CE_ProgressBar, &bar, painter);
        return;
    }
    painter->save();
    painter->setPen(failureTextColor(option.palette));
    painter->drawText(option.rect.adjusted(4, 0, -4, 0), Qt::AlignVCenter | Qt::AlignLeft,
                      option.fontMetrics.elidedText(state, Qt::ElideRight, option.rect.width() - 8));
    painter->restore();
}
