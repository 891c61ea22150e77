#pragma once

#include "KVXDateIndicator.h"

#include <QDate>

// What the key-frame manager and its settings need of the schedule's date
// timeline beyond the indicator the date clock moves: the indicator's date,
// and the calendar under it. Implemented by a QObject, held through a
// KVXIndicatorLink.
class KVXScheduleDateLine : public KVXDateIndicator {
public:
    virtual QDate GetIndicator() const = 0;
    // The first date the calendar shows; moving it keeps the indicator in
    // view without playing the schedule there.
    virtual QDate GetCalendarStartDate() const = 0;
    virtual void SetCalendarStartDate(const QDate& date) = 0;
    // The schedule's dates, shown shaded.
    virtual void SetCalendarDateRange(const QDate& from, const QDate& to) = 0;
    // How the calendar's rows divide the time: 0 year, month, day; 1 year,
    // month, week; 2 year, month, ten days; 3 year, quarter, month.
    virtual int GetCalendarDisplayStyle() const = 0;
    virtual void SetCalendarDisplayStyle(int style) = 0;

protected:
    ~KVXScheduleDateLine() = default;
};
