#pragma once

#include "KVXDateIndicator.h"
#include "KVXFreeazbleClockTimer.h"
#include "KVXIndicatorLink.h"

#include "host/vpe/scene/CCaption.h"

#include <QDate>
#include <QString>

#include <osg/observer_ptr>

#include <functional>

class KVXKeyFramePlayback;
class KVXSchedulePlayback;

// Drives schedule playback. Its time maps linearly onto a date range (the
// schedule's span, whose length in seconds is the end time); while a camera
// animation with date key frames plays it follows the camera clock through
// key-frame playback. Each running tick moves the date timeline's indicator
// and has schedule playback re-enable its animators; a preview stops once
// its end is passed. Both playbacks live above the clocks and give
// themselves to this one when they take it; without them it only keeps time.
class KVXDateAnimationClockTimer : public KVXFreeazbleClockTimer {
public:
    KVXDateAnimationClockTimer(vpe::CRefPtr<vpe::CClock> clock, std::string name);

    void SetDateRange(const QDate& start, const QDate& end);
    const QDate& GetStartDate() const { return m_startDate; }
    const QDate& GetEndDate() const { return m_endDate; }
    // A timeline that goes away is no longer called.
    void SetDateTimeLineWidget(KVXDateIndicator* dateTimeLine) { m_dateTimeLine = KVXIndicatorLink(dateTimeLine); }
    KVXDateIndicator* GetDateTimeLineWidget() const { return m_dateTimeLine.get(); }
    // A film's caption, which shows the date while the clock runs (and how
    // far through the schedule it is); null for none.
    void SetCaption(vpe::CCaption* caption) { m_caption = caption; }
    // The caption's text for a date: "2025-03-15 星期六".
    static QString CaptionText(const QDate& date);
    // Shows the date, and its place in the clock's range, on the caption.
    void ShowDateOn(vpe::CCaption* caption, const QDate& date) const;
    // Words the caption shows after the date (what happens on the site that
    // day); empty words or none: the date alone.
    using CaptionNote = std::function<QString(const QDate&)>;
    void SetCaptionNote(CaptionNote note) { m_note = std::move(note); }
    // Both live as long as the process (the managers are never destroyed).
    void SetSchedulePlayback(KVXSchedulePlayback* schedule) { m_schedule = schedule; }
    void SetKeyFramePlayback(KVXKeyFramePlayback* keyFrames) { m_keyFrames = keyFrames; }

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
    KVXIndicatorLink<KVXDateIndicator> m_dateTimeLine;
    osg::observer_ptr<vpe::CCaption> m_caption;
    CaptionNote m_note;
    KVXSchedulePlayback* m_schedule = nullptr;
    KVXKeyFramePlayback* m_keyFrames = nullptr;
};
