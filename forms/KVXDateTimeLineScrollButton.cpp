#include "KVXDateTimeLineScrollButton.h"

#include "KVXCalendarGrid.h"

#include <QMouseEvent>
#include <QPainter>

KVXDateTimeLineScrollButton::KVXDateTimeLineScrollButton(Direction direction, KVXCalendarGrid* grid,
                                                         QWidget* parent)
    : QPushButton(direction == Left ? QStringLiteral("<<") : QStringLiteral(">>"), parent),
      m_direction(direction),
      m_grid(grid)
{
    setFixedWidth(12);
}

void KVXDateTimeLineScrollButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect area = rect().adjusted(0, 0, -1, -1);
    painter.fillRect(rect(), m_hovered ? QColor(50, 50, 150) : QColor(240, 240, 240));
    painter.setPen(m_hovered ? QColor(255, 255, 255) : QColor(0, 0, 0));
    painter.drawRect(area);
    painter.drawText(rect(), Qt::AlignCenter, m_direction == Left ? QStringLiteral("<") : QStringLiteral(">"));
}

void KVXDateTimeLineScrollButton::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && m_grid && m_grid->Indicator().isValid()) {
        // Stepping does not play the schedule.
        m_grid->SetIndicator(m_grid->Indicator().addDays(m_direction == Left ? -1 : 1), false);
        m_grid->setFocus();
        m_grid->update();
    }
    QPushButton::mousePressEvent(event);
}

void KVXDateTimeLineScrollButton::enterEvent(QEvent* event)
{
    m_hovered = true;
    update();
    QPushButton::enterEvent(event);
}

void KVXDateTimeLineScrollButton::leaveEvent(QEvent* event)
{
    m_hovered = false;
    update();
    QPushButton::leaveEvent(event);
}
