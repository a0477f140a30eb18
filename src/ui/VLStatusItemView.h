#pragma once

// The tray icon's image: "Status", "StatusHighlighted" (while the panel is open) or "StatusBlue" (updates found in
// the background), with the count of outdated apps drawn on it. Drawn from our SVG artwork at each size and scale
// the tray asks for, so it stays crisp at a scale factor of 2.

#include <QIcon>
#include <QString>

class VLStatusItemView
{
public:
    enum class Image { Status, StatusBlue };

    void setImage(Image image) { m_image = image; }
    void setHighlighted(bool highlighted) { m_isHighlighted = highlighted; }
    void setCount(int count) { m_count = count; }
    Image image() const { return m_image; }
    bool isHighlighted() const { return m_isHighlighted; }
    int count() const { return m_count; }

    // The resource name of the artwork now shown.
    QString imageName() const;
    QPixmap pixmap(int size, qreal devicePixelRatio) const;
    QIcon icon() const;

private:
    Image m_image = Image::Status;
    bool m_isHighlighted = false;
    int m_count = 0;
};
