#include "ui/VLStatusItemView.h"

#include <QPainter>
#include <QPainterPath>

QString VLStatusItemView::imageName() const
{
    if (m_isHighlighted) {
        return QStringLiteral("StatusHighlighted");
    }
    return m_image == Image::StatusBlue ? QStringLiteral("StatusBlue") : QStringLiteral("Status");
}

QPixmap VLStatusItemView::pixmap(int size, qreal devicePixelRatio) const
{
    const QIcon artwork(QStringLiteral(":/icons/%1.svg").arg(imageName()));
    QPixmap pixmap(QSize(size, size) * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    artwork.paint(&painter, QRect(0, 0, size, size));
    if (m_count > 0) {
        // A red badge in the lower right corner, like a launcher's count, with a light rim for dark panels.
        const QString text = m_count > 99 ? QStringLiteral("99+") : QString::number(m_count);
        QFont font = painter.font();
        font.setBold(true);
        font.setPixelSize(std::max(7, size * 9 / 20));
        painter.setFont(font);
        const int textWidth = painter.fontMetrics().horizontalAdvance(text);
        const qreal height = font.pixelSize() + 3;
        const qreal width = std::max<qreal>(height, textWidth + 5);
        const QRectF badge(size - width, size - height, width, height);
        painter.setPen(QPen(QColor(0xf2, 0xf4, 0xf7), 1));
        painter.setBrush(QColor(0xd9, 0x2d, 0x20));
        painter.drawRoundedRect(badge.adjusted(0.5, 0.5, -0.5, -0.5), height / 2, height / 2);
        painter.setPen(Qt::white);
        painter.drawText(badge, Qt::AlignCenter, text);
    }
    return pixmap;
}

QIcon VLStatusItemView::icon() const
{
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64}) {
        icon.addPixmap(pixmap(size, 1.0));
        icon.addPixmap(pixmap(size, 2.0));
    }
    return icon;
}
