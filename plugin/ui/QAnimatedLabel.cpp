#include "QAnimatedLabel.h"

QAnimatedLabel::QAnimatedLabel(QWidget *parent) : QLabel(parent)
{
    connect(&m_timer, &QTimer::timeout, this, &QAnimatedLabel::changeImage);
}

void QAnimatedLabel::setSequence(const QStringList &files, int interval)
{
    m_timer.stop();
    m_pixmaps.clear();
    for (const QString &file : files)
        m_pixmaps.append(QPixmap(file));
    m_index = 0;
    if (m_pixmaps.isEmpty())
        return;
    setMinimumSize(m_pixmaps.first().size());
    m_timer.start(interval);
}

void QAnimatedLabel::changeImage()
{
    if (m_index >= m_pixmaps.size())
        m_index = 0;
    setPixmap(m_pixmaps.at(m_index++));
}
