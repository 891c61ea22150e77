#pragma once

#include <QWidget>

#include <memory>

class KVXDateTimeLineWidget;
class KVXScheduleGantt;
class ZUpdater;
class QLabel;
class QPushButton;

// The virtual-construction page's controls: the schedule's date timeline
// (scrubbing it shows the site on that day; it follows the date while the
// schedule plays), the Gantt rows of the schedule's tasks under it, play,
// pause, stop and preview, and how many records are in conflict.
class KVXConstructionPage : public QWidget {
    Q_OBJECT
public:
    explicit KVXConstructionPage(QWidget* parent = nullptr);
    ~KVXConstructionPage() override;

    KVXDateTimeLineWidget* timeline() const { return m_timeline; }
    QPushButton* button(const QString& text) const;
    QLabel* conflicts() const { return m_conflicts; }
    KVXScheduleGantt* gantt() const { return m_gantt; }

public slots:
    // Checks the records again and shows how many are in conflict.
    void refreshConflicts();
    // The timeline over the current document's schedule: its calendar from
    // a few days before the start, the schedule's days shaded.
    void followSchedule();

private:
    class DocumentFollower;

    KVXDateTimeLineWidget* m_timeline;
    QLabel* m_conflicts;
    KVXScheduleGantt* m_gantt;
    std::unique_ptr<DocumentFollower> m_follower;
};
