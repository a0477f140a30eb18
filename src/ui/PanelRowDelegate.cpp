#include "ui/PanelRowDelegate.h"

#include "ui/AppListModel.h"
#include "ui/RowColors.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCursor>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

namespace {

using RowState = AppListModel::RowState;

constexpr int kIconSize = 32;
constexpr int kSpacing = 6;
constexpr int kActionWidth = 96;
constexpr int kBarWidth = 64;
constexpr int kToolWidth = 28;

QRect innerRect(const QRect &rect)
{
    return rect.adjusted(8, 4, -4, -4);
}

QRect iconRect(const QRect &rect)
{
    const QRect inner = innerRect(rect);
    return {inner.left(), inner.top() + (inner.height() - kIconSize) / 2, kIconSize, kIconSize};
}

RowState rowState(const QModelIndex &index)
{
    return index.data(AppListModel::RowStateRole).value<RowState>();
}

AppRef appOf(const QModelIndex &index)
{
    return index.data(AppListModel::AppRole).value<AppRef>();
}

// text wrapped into rect, cut short with an ellipsis where it would not fit; the tooltip has all of it.
QString wrappedToFit(const QFontMetrics &metrics, const QRect &rect, const QString &text)
{
    for (qsizetype length = text.size(); length > 0; --length) {
        const QString shown = length == text.size() ? text : text.left(length).trimmed() + QChar(0x2026);
        if (metrics.boundingRect(rect, Qt::TextWordWrap, shown).height() <= rect.height()) {
            return shown;
        }
    }
    return QString();
}

// The pointer is over part of the row drawn in option: its button is drawn lit, as a button widget would be.
bool isHovered(const QStyleOptionViewItem &option, PanelRowDelegate::Part part)
{
    const auto *view = qobject_cast<const QAbstractItemView *>(option.widget);
    return view && view->viewport()->underMouse() &&
           PanelRowDelegate::partRect(option.rect, part).contains(view->viewport()->mapFromGlobal(QCursor::pos()));
}

const QStyle *styleOf(const QStyleOptionViewItem &option)
{
    return option.widget ? option.widget->style() : QApplication::style();
}

} // namespace

QRect PanelRowDelegate::partRect(const QRect &rect, Part part)
{
    const QRect inner = innerRect(rect);
    const QRect menu(inner.right() - kToolWidth + 1, inner.top(), kToolWidth, inner.height());
    const QRect action(menu.left() - kSpacing - kActionWidth, inner.top(), kActionWidth, inner.height());
    switch (part) {
    case Part::Update:
        return action;
    case Part::Cancel:
        return action.adjusted(kBarWidth + kSpacing, 0, 0, 0);
    case Part::Menu:
        return menu;
    case Part::None:
        break;
    }
    return {};
}

PanelRowDelegate::Part PanelRowDelegate::partAt(const QRect &rect, const QPoint &pos, const QModelIndex &index)
{
    if (partRect(rect, Part::Menu).contains(pos)) {
        return Part::Menu;
    }
    switch (rowState(index)) {
    case RowState::Idle:
        return partRect(rect, Part::Update).contains(pos) ? Part::Update : Part::None;
    case RowState::Updating:
    case RowState::Installing:
        return partRect(rect, Part::Cancel).contains(pos) ? Part::Cancel : Part::None;
    case RowState::Done:
    case RowState::Failed:
        break;
    }
    return Part::None;
}

void PanelRowDelegate::pressButton(const QModelIndex &index)
{
    switch (rowState(index)) {
    case RowState::Idle:
        emit updateRequested(appOf(index));
        break;
    case RowState::Updating:
        emit cancelRequested(appOf(index));
        break;
    case RowState::Installing: // an installation is not stopped half-way
    case RowState::Done:
    case RowState::Failed:
        break;
    }
}

void PanelRowDelegate::trigger(Part part, const QModelIndex &index, const QStyleOptionViewItem &option)
{
    if (part == Part::Menu) {
        const auto *view = qobject_cast<const QAbstractItemView *>(option.widget);
        const QWidget *viewport = view ? view->viewport() : option.widget;
        const QRect menu = partRect(option.rect, Part::Menu);
        emit menuRequested(appOf(index), viewport ? viewport->mapToGlobal(menu.bottomLeft()) : menu.bottomLeft());
    } else if (part != Part::None) {
        pressButton(index);
    }
}

bool PanelRowDelegate::editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                                   const QModelIndex &index)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        const Part part = partAt(option.rect, mouse->position().toPoint(), index);
        if (mouse->button() != Qt::LeftButton || part == Part::None) {
            break;
        }
        m_pressed = index;
        m_pressedPart = part;
        return true;
    }
    case QEvent::MouseButtonRelease: {
        if (m_pressedPart == Part::None) {
            break;
        }
        const Part pressed = m_pressedPart;
        const bool sameRow = m_pressed == index;
        m_pressedPart = Part::None;
        m_pressed = QPersistentModelIndex();
        // A press dragged off its button and let go elsewhere does nothing, as with any button.
        if (sameRow && partAt(option.rect, static_cast<QMouseEvent *>(event)->position().toPoint(), index) == pressed) {
            trigger(pressed, index, option);
        }
        return true;
    }
    case QEvent::KeyPress: {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Space || key == Qt::Key_Select) {
            pressButton(index);
            return true;
        }
        break;
    }
    default:
        break;
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}

QSize PanelRowDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    Q_UNUSED(index)
    QFont bold = option.font;
    bold.setBold(true);
    const int texts = QFontMetrics(bold).height() + option.fontMetrics.height();
    return {option.rect.width(), std::max(kIconSize, texts) + 8};
}

void PanelRowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    // The row's background and focus without the item's own text and icon.
    QStyleOptionViewItem cell(option);
    initStyleOption(&cell, index);
    const QIcon icon = cell.icon;
    cell.text.clear();
    cell.icon = QIcon();
    cell.features &= ~QStyleOptionViewItem::HasDecoration;
    styleOf(option)->drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);
    icon.paint(painter, iconRect(option.rect));

    const AppRef app = appOf(index);
    const QString versions =
        rowState(index) == RowState::Done ? app->localVersion : tr("%1 → %2").arg(app->localVersion, app->vlVersion);
    QFont bold = option.font;
    bold.setBold(true);
    const QFontMetrics boldMetrics(bold);
    const int textLeft = iconRect(option.rect).right() + 1 + kSpacing;
    const int textWidth = partRect(option.rect, Part::Update).left() - kSpacing - textLeft;
    // The name above, the versions below, each in half the row.
    const QRect inner = innerRect(option.rect);
    const QRect nameRect(textLeft, inner.top(), textWidth, inner.height() / 2);
    const QRect versionsRect(textLeft, nameRect.bottom() + 1, textWidth, inner.height() - nameRect.height());
    painter->save();
    painter->setFont(bold);
    painter->setPen(option.palette.color(QPalette::WindowText));
    painter->drawText(nameRect, Qt::AlignLeft | Qt::AlignVCenter,
                      boldMetrics.elidedText(cell.index.data().toString(), Qt::ElideRight, textWidth));
    painter->setFont(option.font);
    painter->setPen(option.palette.color(QPalette::PlaceholderText));
    painter->drawText(versionsRect, Qt::AlignLeft | Qt::AlignVCenter,
                      option.fontMetrics.elidedText(versions, Qt::ElideRight, textWidth));
    painter->restore();

    paintAction(painter, option, index);
    paintToolButton(painter, option, index, Part::Menu, QStringLiteral("⋯"), true);
}

void PanelRowDelegate::paintAction(QPainter *painter, const QStyleOptionViewItem &option,
                                   const QModelIndex &index) const
{
    const QStyle *style = styleOf(option);
    const QRect action = partRect(option.rect, Part::Update);
    const RowState state = rowState(index);
    switch (state) {
    case RowState::Idle: {
        QStyleOptionButton button;
        button.initFrom(option.widget);
        button.rect = action;
        button.text = tr("Update");
        button.state =
            QStyle::State_Enabled | (isPressed(index, Part::Update) ? QStyle::State_Sunken : QStyle::State_Raised);
        if (isHovered(option, Part::Update)) {
            button.state |= QStyle::State_MouseOver;
        }
        style->drawControl(QStyle::CE_PushButton, &button, painter, option.widget);
        break;
    }
    case RowState::Updating:
    case RowState::Installing: {
        // A host that did not say the size gives fractions past 1: the bar then shows it is busy.
        const double progress = index.data(AppListModel::ProgressRole).toDouble();
        QStyleOptionProgressBar bar;
        bar.initFrom(option.widget);
        const int barHeight = std::min(action.height(), option.fontMetrics.height() + 4);
        bar.rect = QRect(action.left(), action.top() + (action.height() - barHeight) / 2, kBarWidth, barHeight);
        bar.minimum = 0;
        bar.maximum = progress > 1.0 ? 0 : 1000;
        bar.progress = progress > 1.0 ? 0 : static_cast<int>(std::max(progress, 0.0) * 1000);
        bar.state = QStyle::State_Enabled | QStyle::State_Horizontal;
        style->drawControl(QStyle::CE_ProgressBar, &bar, painter, option.widget);
        paintToolButton(painter, option, index, Part::Cancel, QStringLiteral("✕"), state == RowState::Updating);
        break;
    }
    case RowState::Done:
        painter->save();
        painter->setPen(option.palette.color(QPalette::WindowText));
        painter->drawText(action, Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("✓ ") + tr("Updated"));
        painter->restore();
        break;
    case RowState::Failed:
        painter->save();
        painter->setPen(failureTextColor(option.palette));
        painter->drawText(action, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextWordWrap,
                          wrappedToFit(option.fontMetrics, action, index.data(AppListModel::StateTextRole).toString()));
        painter->restore();
        break;
    }
}

void PanelRowDelegate::paintToolButton(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index,
                                       Part part, const QString &text, bool enabled) const
{
    QStyleOptionToolButton button;
    button.initFrom(option.widget);
    button.rect = partRect(option.rect, part);
    button.text = text;
    button.toolButtonStyle = Qt::ToolButtonTextOnly;
    button.subControls = QStyle::SC_ToolButton;
    button.state = QStyle::State_AutoRaise | (enabled ? QStyle::State_Enabled : QStyle::State_None);
    // The style draws the text in the palette's current group: a disabled button is greyed by choosing it.
    button.palette.setCurrentColorGroup(enabled ? QPalette::Active : QPalette::Disabled);
    if (isPressed(index, part)) {
        button.state |= QStyle::State_Sunken | QStyle::State_Raised;
        button.activeSubControls = QStyle::SC_ToolButton;
    } else if (enabled && isHovered(option, part)) {
        button.state |= QStyle::State_MouseOver | QStyle::State_Raised;
        button.activeSubControls = QStyle::SC_ToolButton;
    }
    styleOf(option)->drawComplexControl(QStyle::CC_ToolButton, &button, painter, option.widget);
}

bool PanelRowDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                                 const QModelIndex &index)
{
    QString tip;
    switch (partAt(option.rect, event->pos(), index)) {
    case Part::Menu:
        tip = tr("Actions");
        break;
    case Part::Cancel:
        tip = tr("Cancel");
        break;
    case Part::Update:
    case Part::None:
        if (rowState(index) == RowState::Failed && partRect(option.rect, Part::Update).contains(event->pos())) {
            tip = index.data(AppListModel::StateTextRole).toString();
        }
        break;
    }
    if (tip.isEmpty()) {
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    }
    QToolTip::showText(event->globalPos(), tip, view);
    return true;
}
