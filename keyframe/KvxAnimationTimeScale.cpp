#include "KvxAnimationTimeScale.h"

#include "KVXKeyFrameAnimationManager.h"

#include <QDateTime>
#include <QMouseEvent>
#include <QPainter>

KvxAnimationTimeScale::KvxAnimationTimeScale(QWidget* parent) : QWidget(parent)
{
    qRegisterMetaType<Time_Ms>("Time_Ms");
    setFixedHeight(m_indicatorSize.height() + m_rulerHeight + m_labelSize.height());
}

void KvxAnimationTimeScale::SetTimeUnit(int milliseconds)
{
    if (milliseconds < 1)
        return;
    m_msPerStep = milliseconds;
    update();
    emit ScaleChanged();
}

void KvxAnimationTimeScale::SetPixelsPerStep(int pixels)
{
    m_pixelsPerStep = qBound(kMinPixelsPerStep, pixels, kMaxPixelsPerStep);
    update();
    emit ScaleChanged();
}

void KvxAnimationTimeScale::SetCurrentTime(Time_Ms milliseconds)
{
    if (m_currentTime == milliseconds)
        return;
    m_currentTime = milliseconds;
    update();
}

int KvxAnimationTimeScale::XForTime(Time_Ms milliseconds) const
{
    return static_cast<int>(milliseconds / static_cast<Time_Ms>(m_msPerStep)) * m_pixelsPerStep +
           m_pixelsPerStep / 2;
}

Time_Ms KvxAnimationTimeScale::TimeAtX(int x) const
{
    const int clamped = qBound(0, x, width());
    const int steps = (clamped - m_pixelsPerStep / 2) / m_pixelsPerStep;
    return steps > 0 ? static_cast<Time_Ms>(steps) * static_cast<Time_Ms>(m_msPerStep) : 0;
}

QString KvxAnimationTimeScale::FormatTime(Time_Ms milliseconds)
{
    const QString minutesAndSeconds =
        QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC).toString(QStringLiteral("mm:ss"));
    const Time_Ms hours = milliseconds / 3600000u;
    return hours > 0 ? QStringLiteral("%1:").arg(hours) + minutesAndSeconds : minutesAndSeconds;
}

void KvxAnimationTimeScale::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    // A click on the ruler jumps there and starts a drag.
    m_dragging = true;
    dragTo(event->pos().x());
}

void KvxAnimationTimeScale::mouseMoveEvent(QMouseEvent* event)
{
    if (m_dragging)
        dragTo(event->pos().x());
}

void KvxAnimationTimeScale::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_dragging = false;
}

void KvxAnimationTimeScale::dragTo(int x)
{
    const Time_Ms time = TimeAtX(x);
    if (time != m_currentTime) {
        m_currentTime = time;
        update();
        emit IndicatorMoved(time);
    }
    KVXKeyFrameAnimationManager::GetInstance()->PlayAnimationAtTime(time);
}

void KvxAnimationTimeScale::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QFont labels(QStringLiteral("微软雅黑"));
    labels.setPixelSize(9);
    painter.setFont(labels);
    painter.fillRect(rect(), m_lightBrush);
    paintRuler(painter);
    paintIndicator(painter);
}

void KvxAnimationTimeScale::paintRuler(QPainter& painter) const
{
    const int top = m_indicatorSize.height();
    painter.setPen(Qt::gray);
    painter.drawLine(0, top, width(), top);
    painter.setPen(Qt::darkGray);
    for (int i = 0, x = m_pixelsPerStep / 2; x < width(); ++i, x += m_pixelsPerStep) {
        const bool major = i % 5 == 0;
        painter.drawLine(x, top, x, top + (major ? m_rulerHeight : m_rulerHeight - 5));
        if (!major)
            continue;
        const QRect label(x - m_labelSize.width() / 2, top + m_rulerHeight, m_labelSize.width(),
                          m_labelSize.height());
        painter.drawText(label, Qt::AlignCenter, FormatTime(static_cast<Time_Ms>(i) * m_msPerStep));
    }
}

void KvxAnimationTimeScale::paintIndicator(QPainter& painter) const
{
    const int x = XForTime(m_currentTime);
    const QRect box(x - m_indicatorSize.width() / 2, 0, m_indicatorSize.width(), m_indicatorSize.height());
    painter.setPen(m_indicatorPen);
    painter.setBrush(m_indicatorBrush);
    painter.drawRect(box.adjusted(0, 0, -1, -1));
    painter.drawLine(x, box.bottom() + 1, x, height());
    painter.setPen(Qt::white);
    painter.drawText(box, Qt::AlignCenter, FormatTime(m_currentTime));
}
