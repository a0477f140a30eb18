#pragma once

// Paints a row of the panel: the app's icon, name, installed and new version, then what its update is doing (an
// Update button, a progress bar with a cancel button, the done mark, or the failure text) and its actions button.
// Clicks on those buttons, and Space on the current row, arrive here as requests: one delegate serves every row, so
// the panel lists thousands of apps without a widget each.

#include "scan/AppList.h"

#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

class PanelRowDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    enum class Part { None, Update, Cancel, Menu };

    using QStyledItemDelegate::QStyledItemDelegate;

    // Where part lies in a row drawn in rect.
    static QRect partRect(const QRect &rect, Part part);
    // Does what the row's button does: updates an idle app, cancels a download.
    void pressButton(const QModelIndex &index);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

signals:
    void updateRequested(const AppRef &app);
    void cancelRequested(const AppRef &app);
    void menuRequested(const AppRef &app, const QPoint &globalPos);

protected:
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;

private:
    // The button at pos in a row of index drawn in rect, None where there is none (a cancel only while updating).
    static Part partAt(const QRect &rect, const QPoint &pos, const QModelIndex &index);
    void trigger(Part part, const QModelIndex &index, const QStyleOptionViewItem &option);
    void paintAction(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void paintToolButton(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index, Part part,
                         const QString &text, bool enabled) const;
    bool isPressed(const QModelIndex &index, Part part) const { return m_pressedPart == part && m_pressed == index; }

    QPersistentModelIndex m_pressed;
    Part m_pressedPart = Part::None;
};
