#include "KVXCalendarGrid.h"

#include "animation/KVXAnimatorManager.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <cmath>

namespace {

const float kPixelsPerDay[] = {20.0f, 5.0f, 3.0f, 1.0f};

int truncated(double value) { return static_cast<int>(value); }

} // namespace

KVXCalendarGrid::KVXCalendarGrid(QWidget* parent) : QWidget(parent), m_firstDate(QDate::currentDate())
{
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setFixedHeight(3 * kBandHeight + kHeaderHeight + 1);
    setMinimumWidth(3 * kIndicatorWidth);
}

void KVXCalendarGrid::SetZoomLevel(int level)
{
    m_zoomLevel = qBound(0, level, kMaxZoomLevel);
    m_pixelsPerDay = kPixelsPerDay[m_zoomLevel];
    update();
}

int KVXCalendarGrid::XForDate(const QDate& date) const
{
    return truncated(static_cast<double>(m_firstDate.daysTo(date)) * m_pixelsPerDay);
}

QDate KVXCalendarGrid::DateAtX(int x) const { return m_firstDate.addDays(truncated(x / m_pixelsPerDay)); }

void KVXCalendarGrid::SetDateRange(const QDate& from, const QDate& to)
{
    m_rangeFrom = from;
    m_rangeTo = to;
    update();
}

void KVXCalendarGrid::SetFirstDate(const QDate& date, bool keepIndicator)
{
    if (!date.isValid())
        return;
    m_firstDate = date;
    if (keepIndicator && m_indicator.isValid()) {
        const int x = XForDate(m_indicator);
        if (x < kMargin)
            SetIndicator(m_firstDate.addDays(truncated(kMargin / m_pixelsPerDay)), false);
        else if (x > width() - kMargin + 1)
            SetIndicator(m_firstDate.addDays(truncated((width() - kMargin + 1) / m_pixelsPerDay)), false);
    }
    update();
}

void KVXCalendarGrid::SetIndicator(const QDate& date, bool notify)
{
    if (date == m_indicator || !date.isValid())
        return;
    m_indicator = date;
    const int x = XForDate(m_indicator);
    // Keep the indicator off the edges: the strip scrolls to it.
    int shift = 0;
    if (x < kMargin) {
        shift = truncated((x - kMargin) / m_pixelsPerDay);
        shift = shift == 0 ? -1 : shift;
    } else if (x > width() - kMargin + 1) {
        shift = truncated((x - width() + kMargin - 1) / m_pixelsPerDay);
        shift = shift == 0 ? 1 : shift;
    }
    const QDate shifted = m_firstDate.addDays(shift);
    if (shift != 0 && shifted.isValid())
        m_firstDate = shifted;
    update();
    if (notify) {
        KVXAnimatorManager::getInstance()->playAnimationAtDate(m_indicator);
        emit userMovedIndicator(m_indicator);
    }
}

QRect KVXCalendarGrid::IndicatorBox() const
{
    const int centre = truncated(XForDate(m_indicator) + m_pixelsPerDay * 0.5);
    return QRect(QPoint(centre - kMargin, 0), QPoint(centre + kMargin - 1, kHeaderHeight - 1));
}

// ---- bands -------------------------------------------------------------------

KVXCalendarGrid::Unit KVXCalendarGrid::unitOfRow(int row) const
{
    if (row == 1)
        return Unit::Year;
    if (row == 2)
        return m_zoomLevel == 3 ? Unit::Quarter : Unit::Month;
    switch (m_zoomLevel) {
    case 0: return Unit::Day;
    case 1: return Unit::Week;
    case 2: return Unit::TenDays;
    default: return Unit::Month;
    }
}

QDate KVXCalendarGrid::cellStart(Unit unit, const QDate& date)
{
    switch (unit) {
    case Unit::Year: return QDate(date.year(), 1, 1);
    case Unit::Quarter: return QDate(date.year(), (date.month() - 1) / 3 * 3 + 1, 1);
    case Unit::Month: return QDate(date.year(), date.month(), 1);
    case Unit::TenDays: return QDate(date.year(), date.month(), date.day() > 20 ? 21 : date.day() > 10 ? 11 : 1);
    case Unit::Week: return date.addDays(1 - date.dayOfWeek());
    case Unit::Day: return date;
    }
    return date;
}

QDate KVXCalendarGrid::nextCell(Unit unit, const QDate& start)
{
    switch (unit) {
    case Unit::Year: return start.addYears(1);
    case Unit::Quarter: return start.addMonths(3);
    case Unit::Month: return start.addMonths(1);
    case Unit::TenDays: return start.day() == 21 ? start.addMonths(1).addDays(-20) : start.addDays(10);
    case Unit::Week: return start.addDays(7);
    case Unit::Day: return start.addDays(1);
    }
    return start.addDays(1);
}

QString KVXCalendarGrid::cellLabel(Unit unit, const QDate& start)
{
    static const char* const kQuarters[] = {"第一季度", "第二季度", "第三季度", "第四季度"};
    static const char* const kTenDays[] = {"上旬", "中旬", "下旬"};
    switch (unit) {
    case Unit::Year: return start.toString(QStringLiteral("yyyy")) + QStringLiteral("年");
    case Unit::Quarter: return QString::fromUtf8(kQuarters[(start.month() - 1) / 3]);
    case Unit::Month: return start.toString(QStringLiteral("M")) + QStringLiteral("月");
    case Unit::TenDays: return QString::fromUtf8(kTenDays[(start.day() - 1) / 10]);
    case Unit::Week: return QStringLiteral("%1周").arg(start.weekNumber());
    case Unit::Day: return start.toString(QStringLiteral("dd"));
    }
    return QString();
}

QVector<KVXCalendarGrid::BandCell> KVXCalendarGrid::BandCells(int row) const
{
    QVector<BandCell> cells;
    const Unit unit = unitOfRow(row);
    QDate start = cellStart(unit, m_firstDate);
    while (start.isValid()) {
        const QDate next = nextCell(unit, start);
        const int right = XForDate(next);
        cells.push_back({cellLabel(unit, start), qMax(0, XForDate(start)), qMin(width(), right)});
        if (right >= width() || !next.isValid())
            break;
        start = next;
    }
    return cells;
}

// ---- painting ----------------------------------------------------------------

void KVXCalendarGrid::paintEvent(QPaintEvent* event)
{
    QWidget::paintEvent(event);
    QPainter painter(this);
    painter.fillRect(rect(), m_background);
    if (m_rangeFrom.isValid() && m_rangeTo.isValid()) {
        const int left = XForDate(m_rangeFrom);
        painter.fillRect(QRect(left, 0, XForDate(m_rangeTo) - left, height()), QColor(200, 200, 200));
    }
    paintIndicator(painter);
    painter.setPen(m_gridPen);
    for (int line = 0; line < 4; ++line) {
        const int y = kHeaderHeight + line * kBandHeight;
        painter.drawLine(0, y, width(), y);
    }
    for (int row = 1; row <= 3; ++row)
        paintBand(painter, row);
}

void KVXCalendarGrid::paintIndicator(QPainter& painter)
{
    if (!m_indicator.isValid())
        return;
    const QColor red(255, 70, 70);
    m_indicatorBox = IndicatorBox();
    painter.fillRect(m_indicatorBox, QColor(255, 70, 70, 100));
    painter.setPen(red);
    painter.drawRect(m_indicatorBox);
    // The box spans the centre's kMargin pixels on either side; its
    // center() would be a pixel left of it.
    const int centre = m_indicatorBox.left() + kMargin;
    painter.drawLine(centre, kHeaderHeight, centre, height());
    painter.setPen(m_textPen);
    painter.drawText(m_indicatorBox, Qt::AlignCenter, m_indicator.toString(QStringLiteral("yyyy-MM-dd")));
}

void KVXCalendarGrid::paintBand(QPainter& painter, int row) const
{
    const int top = kHeaderHeight + (row - 1) * kBandHeight;
    for (const BandCell& cell : BandCells(row)) {
        painter.setPen(m_textPen);
        painter.drawText(QRect(cell.left, top, cell.right - cell.left, kBandHeight), Qt::AlignCenter, cell.label);
        painter.setPen(m_gridPen);
        painter.drawLine(cell.right, top, cell.right, top + kBandHeight);
    }
}

// ---- the user ----------------------------------------------------------------

void KVXCalendarGrid::mousePressEvent(QMouseEvent* event)
{
    if (!m_editable)
        return QWidget::mousePressEvent(event);
    m_dragging = false;
    if (event->button() == Qt::LeftButton) {
        if (m_indicator.isValid() && IndicatorBox().contains(event->pos()))
            m_dragging = true;
        else
            SetIndicator(DateAtX(event->pos().x()), true);
    }
    m_pressPosition = event->pos();
}

void KVXCalendarGrid::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_editable)
        return QWidget::mouseMoveEvent(event);
    setFocus();
    if ((event->buttons() & Qt::LeftButton) && m_dragging) {
        SetIndicator(DateAtX(event->pos().x()), true);
    } else if (event->buttons() & Qt::MiddleButton) {
        // Whole days only: smaller moves add up until they make one.
        const int days = truncated((event->pos().x() - m_pressPosition.x()) / m_pixelsPerDay);
        if (days != 0) {
            SetFirstDate(m_firstDate.addDays(-days), true);
            m_pressPosition = event->pos();
            update();
        }
    }
}

void KVXCalendarGrid::mouseReleaseEvent(QMouseEvent* event)
{
    m_dragging = false;
    QWidget::mouseReleaseEvent(event);
}

void KVXCalendarGrid::zoomAbout(int x, bool in)
{
    if ((in && m_zoomLevel == 0) || (!in && m_zoomLevel == kMaxZoomLevel))
        return;
    const QDate anchor = DateAtX(x);
    SetZoomLevel(m_zoomLevel + (in ? -1 : 1));
    SetFirstDate(anchor.addDays(-truncated(x / m_pixelsPerDay)), true);
}

void KVXCalendarGrid::wheelEvent(QWheelEvent* event)
{
    if (!m_editable)
        return QWidget::wheelEvent(event);
    const bool forward = event->angleDelta().y() > 0;
    if (event->angleDelta().y() == 0)
        return;
    if (event->modifiers() & Qt::ControlModifier)
        zoomAbout(truncated(event->position().x()), forward);
    else
        SetFirstDate(m_firstDate.addDays(truncated((forward ? -100.0 : 100.0) / m_pixelsPerDay)), true);
    update();
}

void KVXCalendarGrid::keyPressEvent(QKeyEvent* event)
{
    // Qt's own key codes: native codes differ from platform to platform
    // (virtual keys 37 and 39 on one, key symbols on another).
    if (m_editable && m_indicator.isValid()) {
        if (event->key() == Qt::Key_Left)
            SetIndicator(m_indicator.addDays(-1), true);
        else if (event->key() == Qt::Key_Right)
            SetIndicator(m_indicator.addDays(1), true);
    }
    QWidget::keyPressEvent(event);
}
