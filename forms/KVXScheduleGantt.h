#pragma once

#include "KVXScheduleGanttRows.h"

#include <QPointer>
#include <QWidget>

class KVXCalendarGrid;

// The schedule's Gantt view under the date timeline: a bar a row (a task's
// records together, or a record added by hand) on the timeline's own days,
// so that it scrolls and zooms with it; green for linked tasks, blue for
// records added by hand, red where a record is in conflict, grey where an
// element is gone. A click on a row shows the site on its first day.
class KVXScheduleGantt : public QWidget {
    Q_OBJECT
public:
    static constexpr int kRowHeight = 18;

    explicit KVXScheduleGantt(KVXCalendarGrid* grid, QWidget* parent = nullptr);

    const std::vector<KVXScheduleGanttRows::Row>& Rows() const { return m_rows; }
    // A row's bar in this widget's coordinates.
    QRect BarRect(int row) const;
    // The row under a point; -1 for none.
    int RowAt(const QPoint& point) const;
    QSize sizeHint() const override;
    static QColor ColorOf(KVXScheduleGanttRows::State state);

public slots:
    // Reads the records again, with the conflicts the last check found.
    void Refresh();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    // A date's x on the timeline, in this widget's coordinates.
    int xOf(const QDate& date) const;

    QPointer<KVXCalendarGrid> m_grid;
    std::vector<KVXScheduleGanttRows::Row> m_rows;
};
