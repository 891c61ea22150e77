#pragma once

#include <QBrush>
#include <QColor>
#include <QPen>
#include <QSize>
#include <QWidget>

// Milliseconds on the key-frame timeline.
using Time_Ms = unsigned int;

// The ruler of the key-frame timeline and its play indicator. One step of
// the ruler is msPerStep long and pixelsPerStep wide; every fifth tick is a
// major one with its time under it. Times are drawn at the step to their
// left: x = t / msPerStep * pixelsPerStep + pixelsPerStep / 2 in whole
// numbers. Dragging the indicator snaps it to whole steps and shows the
// fly-through's frame there.
class KvxAnimationTimeScale : public QWidget {
    Q_OBJECT
public:
    static constexpr int kMinPixelsPerStep = 4;
    static constexpr int kMaxPixelsPerStep = 100;

    explicit KvxAnimationTimeScale(QWidget* parent = nullptr);

    // The time of one step in milliseconds; a unit under 1 ms is refused.
    int GetTimeUnit() const { return m_msPerStep; }
    void SetTimeUnit(int milliseconds);
    int GetPixelsPerStep() const { return m_pixelsPerStep; }
    // Clamped to kMinPixelsPerStep … kMaxPixelsPerStep.
    void SetPixelsPerStep(int pixels);
    Time_Ms GetCurrentTime() const { return m_currentTime; }
    // Silent: for the playing clock and the timeline.
    void SetCurrentTime(Time_Ms milliseconds);
    bool IsDragging() const { return m_dragging; }

    int XForTime(Time_Ms milliseconds) const;
    // Snapped to a whole step; never before 0.
    Time_Ms TimeAtX(int x) const;
    // "mm:ss", with the whole hours and ":" in front from one hour on.
    static QString FormatTime(Time_Ms milliseconds);

signals:
    void IndicatorMoved(Time_Ms milliseconds);
    // The time or the width of a step changed: whatever is drawn on the
    // scale's axis moves.
    void ScaleChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void dragTo(int x);
    void paintRuler(QPainter& painter) const;
    void paintIndicator(QPainter& painter) const;

    int m_pixelsPerStep = 10;
    int m_msPerStep = 1000;
    int m_rulerHeight = 10;
    Time_Ms m_currentTime = 0;
    QSize m_indicatorSize{48, 15};
    bool m_dragging = false;
    QSize m_labelSize{48, 10};
    QBrush m_indicatorBrush{QColor(255, 64, 64)};
    QPen m_indicatorPen{QColor(233, 0, 0)};
    QBrush m_backgroundBrush{QColor(42, 42, 42)};
    QBrush m_lightBrush{QColor(250, 250, 250)};
};
