#include "KVXScheduleGantt.h"

#include "KVXCalendarGrid.h"

#include "animation/KVXAnimatorManager.h"

#include "host/db/PfDocManager.h"

#include <QEvent>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

namespace {
constexpr int kBarMargin = 3;
constexpr int kMinimumBarWidth = 2;
} // namespace

KVXScheduleGantt::KVXScheduleGantt(KVXCalendarGrid* grid, QWidget* parent) : QWidget(parent), m_grid(grid)
{
    // Whatever moves the timeline (scrolling, zooming, the indicator)
    // repaints it; the bars follow on the same paint.
    if (m_grid)
        m_grid->installEventFilter(this);
    setMouseTracking(false);
    Refresh();
}

QColor KVXScheduleGantt::ColorOf(KVXScheduleGanttRows::State state)
{
    switch (state) {
    case KVXScheduleGanttRows::State::Linked: return QColor(76, 175, 80);
    case KVXScheduleGanttRows::State::ByHand: return QColor(74, 144, 217);
    case KVXScheduleGanttRows::State::Conflict: return QColor(229, 57, 53);
    case KVXScheduleGanttRows::State::Unlinked: return QColor(158, 158, 158);
    }
    return Qt::gray;
}

void KVXScheduleGantt::Refresh()
{
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    std::vector<int> conflicts;
    for (const auto& [number, conflict] : manager->getErrorMap())
        conflicts.push_back(number);
    m_rows = KVXScheduleGanttRows::Build(manager->getAnimationVector(), conflicts,
                                         PfDocManagerPtr()->CurrentDocument());
    updateGeometry();
    update();
}

int KVXScheduleGantt::xOf(const QDate& date) const
{
    if (!m_grid)
        return 0;
    return mapFromGlobal(m_grid->mapToGlobal(QPoint(m_grid->XForDate(date), 0))).x();
}

QRect KVXScheduleGantt::BarRect(int row) const
{
    if (row < 0 || row >= static_cast<int>(m_rows.size()))
        return QRect();
    const KVXScheduleGanttRows::Row& each = m_rows[static_cast<std::size_t>(row)];
    const int left = xOf(each.start);
    const int right = std::max(xOf(each.end), left + kMinimumBarWidth);
    return QRect(QPoint(left, row * kRowHeight + kBarMargin), QPoint(right - 1, (row + 1) * kRowHeight - kBarMargin));
}

int KVXScheduleGantt::RowAt(const QPoint& point) const
{
    const int row = point.y() / kRowHeight;
    return point.y() >= 0 && row < static_cast<int>(m_rows.size()) ? row : -1;
}

QSize KVXScheduleGantt::sizeHint() const
{
    return QSize(400, std::max(1, static_cast<int>(m_rows.size())) * kRowHeight);
}

bool KVXScheduleGantt::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_grid && event->type() == QEvent::Paint)
        update();
    return QWidget::eventFilter(watched, event);
}

bool KVXScheduleGantt::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        const int row = RowAt(help->pos());
        if (row < 0) {
            QToolTip::hideText();
            return true;
        }
        const KVXScheduleGanttRows::Row& each = m_rows[static_cast<std::size_t>(row)];
        QToolTip::showText(help->globalPos(),
                           QStringLiteral("%1\n%2 至 %3，%4 条动画，%5")
                               .arg(each.name, each.start.toString(Qt::ISODate),
                                    each.end.addDays(-1).toString(Qt::ISODate))
                               .arg(each.numbers.size())
                               .arg(KVXScheduleGanttRows::StateText(each.state)),
                           this);
        return true;
    }
    return QWidget::event(event);
}

void KVXScheduleGantt::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().base());
    for (int row = 0; row < static_cast<int>(m_rows.size()); ++row) {
        if (row % 2)
            painter.fillRect(QRect(0, row * kRowHeight, width(), kRowHeight), palette().alternateBase());
        const QRect bar = BarRect(row);
        painter.fillRect(bar, ColorOf(m_rows[static_cast<std::size_t>(row)].state));
        painter.setPen(palette().text().color());
        painter.drawText(QRect(bar.right() + 4, row * kRowHeight, width(), kRowHeight), Qt::AlignVCenter,
                         m_rows[static_cast<std::size_t>(row)].name);
    }
    if (m_grid && m_grid->Indicator().isValid()) {
        painter.setPen(QPen(Qt::red, 1));
        // Through the middle of the day, as the timeline draws it.
        const int x = (xOf(m_grid->Indicator()) + xOf(m_grid->Indicator().addDays(1))) / 2;
        painter.drawLine(x, 0, x, height());
    }
}

void KVXScheduleGantt::mousePressEvent(QMouseEvent* event)
{
    const int row = RowAt(event->pos());
    if (row >= 0 && m_grid)
        m_grid->SetIndicator(m_rows[static_cast<std::size_t>(row)].start, true);
    QWidget::mousePressEvent(event);
}
