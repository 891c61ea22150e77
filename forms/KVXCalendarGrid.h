#pragma once

#include <QBrush>
#include <QDate>
#include <QPen>
#include <QRect>
#include <QString>
#include <QVector>
#include <QWidget>

// The calendar strip of the date timeline: a red indicator box with its date
// over three bands (years, months, and days, weeks, ten-day periods or
// quarters by zoom level). The x axis is linear in days from the first date.
// While editable it answers the mouse (click or drag the indicator, pan with
// the middle button), the wheel (scroll; Ctrl zooms about the mouse) and the
// left and right arrow keys; a move made by the user plays the schedule at
// the new date.
class KVXCalendarGrid : public QWidget {
    Q_OBJECT
public:
    static constexpr int kBandHeight = 16;
    static constexpr int kHeaderHeight = 16;
    static constexpr int kIndicatorWidth = 80;
    static constexpr int kMargin = kIndicatorWidth / 2;
    static constexpr int kMaxZoomLevel = 3;

    // One cell of a band: its label and where it lies, clipped to the strip.
    struct BandCell {
        QString label;
        int left = 0;
        int right = 0;
    };

    explicit KVXCalendarGrid(QWidget* parent = nullptr);

    void SetEditable(bool editable) { m_editable = editable; }
    bool IsEditable() const { return m_editable; }
    int ZoomLevel() const { return m_zoomLevel; }
    void SetZoomLevel(int level);
    float PixelsPerDay() const { return m_pixelsPerDay; }
    const QDate& FirstDate() const { return m_firstDate; }
    // A date out of QDate's range is ignored. With keepIndicator the
    // indicator is dragged along inside the margin, silently.
    void SetFirstDate(const QDate& date, bool keepIndicator);
    const QDate& Indicator() const { return m_indicator; }
    // With notify the schedule plays at the date and the owner tells its
    // listeners; the same date again does nothing.
    void SetIndicator(const QDate& date, bool notify);
    void SetDateRange(const QDate& from, const QDate& to);

    int XForDate(const QDate& date) const;
    QDate DateAtX(int x) const;
    // The cells of band row 1, 2 or 3 at the current zoom level.
    QVector<BandCell> BandCells(int row) const;
    QRect IndicatorBox() const;

signals:
    // The user moved the indicator (and the schedule was played there).
    void userMovedIndicator(const QDate& date);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    enum class Unit { Year, Quarter, Month, TenDays, Week, Day };

    Unit unitOfRow(int row) const;
    static QDate cellStart(Unit unit, const QDate& date);
    static QDate nextCell(Unit unit, const QDate& start);
    static QString cellLabel(Unit unit, const QDate& start);
    void paintBand(QPainter& painter, int row) const;
    void paintIndicator(QPainter& painter);
    void zoomAbout(int x, bool in);

    bool m_editable = true;
    int m_zoomLevel = 0;
    float m_pixelsPerDay = 20.0f;
    QDate m_firstDate;
    QDate m_indicator;
    QBrush m_background{QColor(240, 240, 240)};
    QPen m_gridPen{QColor(0, 0, 0)};
    QPen m_textPen{QColor(0, 0, 0)};
    QRect m_indicatorBox;
    QPoint m_pressPosition;
    bool m_dragging = false;
    QDate m_rangeFrom;
    QDate m_rangeTo;
};
