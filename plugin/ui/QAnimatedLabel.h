// A label that plays a list of pictures in a loop.
#pragma once

#include <QLabel>
#include <QList>
#include <QPixmap>
#include <QTimer>

/// Label that plays pictures in a loop, even while hidden, so showing it is enough.
class QAnimatedLabel : public QLabel {
    Q_OBJECT
public:
    explicit QAnimatedLabel(QWidget *parent);

    /// Plays @p files in order, each for @p interval milliseconds; the first appears after one interval. The label's
    /// minimum size becomes that of the first picture. A file that cannot be loaded is shown as an empty picture. An
    /// empty list stops the animation.
    void setSequence(const QStringList &files, int interval);

private Q_SLOTS:
    void changeImage();

private:
    QList<QPixmap> m_pixmaps;
    int m_index = 0; // of the next picture
    QTimer m_timer;
};
