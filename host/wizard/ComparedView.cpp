#include "ComparedView.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kMaxZoom = 32.0;

} // namespace

void SharedPlace::ZoomBy(double factor, const QPointF &at)
{
    const double zoom = std::clamp(m_zoom * factor, 1.0, kMaxZoom);
    Set(zoom, at + (m_center - at) * (m_zoom / zoom));
}

void SharedPlace::MoveBy(const QPointF &shares)
{
    Set(m_zoom, m_center - shares);
}

void SharedPlace::ShowAll()
{
    Set(1.0, m_center);
}

/// Sets zoom and center, but keeps the center far enough inside the picture that the views show nothing outside it.
void SharedPlace::Set(double zoom, const QPointF &center)
{
    const double margin = 0.5 / zoom;
    m_zoom = zoom;
    m_center = {std::clamp(center.x(), margin, 1.0 - margin), std::clamp(center.y(), margin, 1.0 - margin)};
    Q_EMIT Changed();
}

ComparedView::ComparedView(SharedPlace *place) : m_place(place)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setFocusPolicy(Qt::StrongFocus); // otherwise a button has the focus and takes the arrow keys
    connect(place, &SharedPlace::Changed, this, QOverload<>::of(&QWidget::update));
}

void ComparedView::Show(const QImage &image)
{
    m_image = image;
    update();
}

void ComparedView::Show(const QString &text)
{
    m_image = QImage();
    m_text = text;
    update();
}

QRectF ComparedView::PictureRect() const
{
    const QSizeF size = QSizeF(m_image.size()).scaled(QSizeF(this->size()), Qt::KeepAspectRatio) * m_place->Zoom();
    const QPointF center(m_place->Center().x() * size.width(), m_place->Center().y() * size.height());
    return {QPointF(width() / 2.0, height() / 2.0) - center, size};
}

void ComparedView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().brush(QPalette::Dark));
    if (m_image.isNull()) {
        painter.setPen(palette().color(QPalette::BrightText));
        constexpr int kMarginPx = 12;
        const QMargins margins(kMarginPx, kMarginPx, kMarginPx, kMarginPx);
        painter.drawText(rect().marginsRemoved(margins), Qt::AlignCenter | Qt::TextWordWrap, m_text);
        return;
    }
    const QRectF target = PictureRect();
    const double perPixel = target.width() / m_image.width();
    painter.setRenderHint(QPainter::SmoothPixmapTransform,
                          perPixel < 2.0); // at twice the size and above, shows individual pixels
    painter.drawImage(target, m_image);
    if (hasFocus()) {
        painter.setPen(palette().color(QPalette::Highlight));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

void ComparedView::wheelEvent(QWheelEvent *event)
{
    const QRectF picture = PictureRect();
    if (m_image.isNull() || picture.isEmpty())
        return;
    const QPointF at = event->position() - picture.topLeft();
    constexpr double kPerDegree = 1.02; // one step of a wheel is 15 degrees
    m_place->ZoomBy(std::pow(kPerDegree, event->angleDelta().y() / 8.0),
                    {at.x() / picture.width(), at.y() / picture.height()});
}

void ComparedView::mousePressEvent(QMouseEvent *event)
{
    m_dragged = event->pos();
}

void ComparedView::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint moved = event->pos() - m_dragged;
    m_dragged = event->pos();
    const QRectF picture = PictureRect();
    if (!picture.isEmpty())
        m_place->MoveBy({moved.x() / picture.width(), moved.y() / picture.height()});
}
