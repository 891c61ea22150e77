#pragma once

#include <QDate>
#include <QString>

// What a viewer of the schedule is told besides the date: the events a
// planner follows on the site, a tower crane's erection, each of its climbs
// and its dismantling, each named for a few days from its date.
class KVXScheduleEvents {
public:
    // The latest events of the current document's schedule within the days
    // up to the date ("TC-1 塔吊 安装，高 32 m", "TC-1 塔吊 顶升至 38 m",
    // "TC-1 塔吊 拆除"), joined when several fall on one day; empty for none.
    static QString NoteAt(const QDate& date, int days);
    // How many days a note stays so that it can be read: two seconds of
    // film, three days at least.
    static int DaysShown(double secondsPerDay);
};
