#pragma once

#include "host/vpe/core/CReferenced.h"

#include <QDate>

// How the schedule's days map to play time: the days since the schedule's
// start, times the seconds a day plays for. One scale is shared: the
// animator manager moves it when the schedule's span or speed changes, and
// the frame callbacks it hands it to read it every frame, so that they
// always agree with the date clock.
class KVXScheduleTimeScale : public vpe::CReferenced {
public:
    KVXScheduleTimeScale() = default;
    KVXScheduleTimeScale(const QDate& start, double secondsPerDay) : m_start(start), m_secondsPerDay(secondsPerDay) {}

    const QDate& GetStartDate() const { return m_start; }
    void SetStartDate(const QDate& start) { m_start = start; }
    double GetSecondsPerDay() const { return m_secondsPerDay; }
    void SetSecondsPerDay(double seconds) { m_secondsPerDay = seconds; }

    // Seconds of play time at the date: negative before the start; 0 for an
    // invalid date or start.
    double TimeAt(const QDate& date) const { return static_cast<double>(m_start.daysTo(date)) * m_secondsPerDay; }

protected:
    ~KVXScheduleTimeScale() override = default;

private:
    QDate m_start;
    double m_secondsPerDay = 1.0;
};
