#pragma once

#include <QPushButton>

class KVXCalendarGrid;

// A narrow button at an end of the date timeline: pressed, it steps the
// indicator a day back (left) or on (right) without playing the schedule.
class KVXDateTimeLineScrollButton : public QPushButton {
    Q_OBJECT
public:
    enum Direction { Left = 1, Right = 2 };

    KVXDateTimeLineScrollButton(Direction direction, KVXCalendarGrid* grid, QWidget* parent = nullptr);

    Direction GetDirection() const { return m_direction; }
    bool IsHovered() const { return m_hovered; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    Direction m_direction;
    KVXCalendarGrid* m_grid;
    bool m_hovered = false;
};
