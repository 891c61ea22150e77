#pragma once

#include "KVXFreeazbleClockTimer.h"

#include <QDate>
#include <QObject>
#include <QPointer>

// Drives schedule playback. Its time maps linearly onto a date range (the
// schedule's span, whose length in seconds is the end time); while a camera
// animation with date key frames plays it follows the camera clock. Each
// running tick moves the date timeline's indicator and has the schedule
// manager evaluate its animators; a preview stops once its end is passed.
class KVXDateAnimationClockTimer : public KVXFreeazbleClockTimer {
public:
    KVXDateAnimationClockTimer(vpe::CRefPtr<vpe::CClock> clock, std::string name);

    void SetDateRange(const QDate& start, const QDate& end);
    const QDate& GetStartDate() const { return m_startDate; }
    const QDate& GetEndDate() const { return m_endDate; }
    // The date timeline is called through its invokable
    // SetIndicator(const QDate&); a timeline that goes away is no longer
    // called.
    void SetDateTimeLineWidget(QObject* dateTimeLine) { m_dateTimeLineWidget = dateTimeLine; }
    QObject* GetDateTimeLineWidget() const { return m_dateTimeLineWidget; }

    // Neither clamps: dates outside the range give times outside
    // [0, end time] and the other way round.
    double TimeForDate(const QDate& date) const;
    QDate DateForTime(double seconds) const;
    void FreezeAtDate(const QDate& date);

    void Update(unsigned int message, void* data) override;

    static KVXDateAnimationClockTimer* GetOrCreate(const std::string& name);

protected:
    ~KVXDateAnimationClockTimer() override = default;

private:
    int totalDays() const;

    QDate m_startDate;
    QDate m_endDate;
    QPointer<QObject> m_dateTimeLineWidget;
};
