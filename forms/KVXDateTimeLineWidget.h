#pragma once

#include "keyframe/KVXScheduleDateLine.h"

#include <QDate>
#include <QWidget>

class KVXCalendarGrid;
class KVXDateEditDialog;
class KVXDateTimeLineScrollButton;
class QMenu;

// The schedule's date timeline: a calendar strip with a red date indicator
// between two scroll buttons. The user scrubs the schedule by clicking,
// dragging or stepping the indicator (each move plays the schedule at that
// date and emits indicatorChanged); the date clock moves it silently while
// the schedule plays, once it is given to the key-frame animation manager's
// SetDateLineWidget. Its context menu jumps to a typed date.
class KVXDateTimeLineWidget : public QWidget, public KVXScheduleDateLine {
    Q_OBJECT
public:
    explicit KVXDateTimeLineWidget(QWidget* parent = nullptr);

    // Silent: for the playing clock.
    void SetIndicator(const QDate& date) override;
    QDate GetIndicator() const override;
    QDate GetCalendarStartDate() const override;
    void SetCalendarStartDate(const QDate& date) override;
    void SetCalendarDateRange(const QDate& from, const QDate& to) override;
    // The calendar's zoom level.
    int GetCalendarDisplayStyle() const override;
    void SetCalendarDisplayStyle(int style) override;
    void SetEditable(bool editable);
    bool GetEditable() const;
    KVXCalendarGrid* GetCalendarGrid() const { return m_grid; }
    KVXDateTimeLineScrollButton* GetScrollButton(bool left) const { return left ? m_left : m_right; }
    QMenu* GetMenu() const { return m_menu; }
    // The dialog the last "定位日期" opened; null before.
    KVXDateEditDialog* GetDateEditDialog() const { return m_dialog; }

signals:
    void indicatorChanged(const QDate& date);
    void editIndicatorChanging(const QDate& date);
    void editIndicatorChanged(const QDate& date);

public slots:
    void onLocateDateTime();

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    KVXCalendarGrid* m_grid;
    KVXDateTimeLineScrollButton* m_left;
    KVXDateTimeLineScrollButton* m_right;
    QMenu* m_menu;
    KVXDateEditDialog* m_dialog = nullptr;
};
