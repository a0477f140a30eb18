#include "ui/IconView.h"

#include <QPainter>

IconView::IconView(int size, QWidget *parent) : QWidget(parent), m_size(size)
{
    setFixedSize(size, size);
}

void IconView::setIcon(const QIcon &icon)
{
    m_icon = icon;
    update();
}

QSize IconView::sizeHint() const
{
    return {m_size, m_size};
}

void IconView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    m_icon.paint(&painter, rect());
}
