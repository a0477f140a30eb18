#pragma once

// Draws a running update's progress bar, or its failure text, over the window list's version column.

#include <QStyledItemDelegate>

class AppRowDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};
