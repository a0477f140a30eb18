#pragma once

// An icon drawn at a fixed size. It is painted from the QIcon on each paint, so that its pixmap is picked (or its SVG
// drawn) for the device it paints on: crisp at any scale factor, where a label's pixmap would be stretched.

#include <QIcon>
#include <QWidget>

class IconView : public QWidget
{
    Q_OBJECT

public:
    explicit IconView(int size, QWidget *parent = nullptr);

    void setIcon(const QIcon &icon);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QIcon m_icon;
    int m_size;
};
