// View of one of several pictures that are shown at the same position and zoom.
#pragma once

#include <QImage>
#include <QObject>
#include <QWidget>

/// Position and zoom shared by pictures of about the same size. At zoom 1, each picture fits its view.
class SharedPlace : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    /// Returns the zoom, from 1 (the whole picture) to kMaxZoom.
    double Zoom() const { return m_zoom; }
    /// Returns the point in the middle of the views, as fractions of the picture's width and height.
    QPointF Center() const { return m_center; }
    /// Multiplies the zoom; the point @p at, as fractions of the picture, doesn't move in the views.
    void ZoomBy(double factor, const QPointF &at);
    void ZoomBy(double factor) { ZoomBy(factor, m_center); }
    /// Moves the picture by fractions of its width and height.
    void MoveBy(const QPointF &shares);
    void ShowAll();

Q_SIGNALS:
    void Changed();

private:
    void Set(double zoom, const QPointF &center);

    double m_zoom = 1.0;
    QPointF m_center{0.5, 0.5};
};

/// View of a picture, or of text instead. The mouse moves and zooms all pictures that share the place.
class ComparedView : public QWidget {
    Q_OBJECT
public:
    /// @param place  must outlive the view.
    explicit ComparedView(SharedPlace *place);

    void Show(const QImage &image);
    void Show(const QString &text);
    /// Returns the picture; null if text is shown.
    QImage Image() const { return m_image; }
    /// Returns the rectangle of the whole picture in the view; it may be larger than the view.
    QRectF PictureRect() const;

    QSize minimumSizeHint() const override { return {200, 150}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    SharedPlace *m_place;
    QImage m_image;
    QString m_text;
    QPoint m_dragged; // last position of the mouse
};
