#include "KVXDateAnimationClockTimer.h"

#include "KVXKeyFramePlayback.h"
#include "KVXSchedulePlayback.h"

KVXDateAnimationClockTimer::KVXDateAnimationClockTimer(vpe::CRefPtr<vpe::CClock> clock, std::string name)
    : KVXFreeazbleClockTimer(std::move(clock), std::move(name))
{
}

void KVXDateAnimationClockTimer::SetDateRange(const QDate& start, const QDate& end)
{
    m_startDate = start;
    m_endDate = end;
}

int KVXDateAnimationClockTimer::totalDays() const
{
    return static_cast<int>(m_startDate.daysTo(m_endDate));
}

double KVXDateAnimationClockTimer::TimeForDate(const QDate& date) const
{
    const int total = totalDays();
    if (total == 0)
        return 0.0;
    return static_cast<double>(m_startDate.daysTo(date)) * GetEndTime() / total;
}

QDate KVXDateAnimationClockTimer::DateForTime(double seconds) const
{
    if (GetEndTime() < 0.001)
        return m_startDate;
    const auto days = static_cast<int>(totalDays() * seconds / GetEndTime());
    return m_startDate.addDays(days);
}

QString KVXDateAnimationClockTimer::CaptionText(const QDate& date)
{
    static const char* const weekdays[] = {"星期一", "星期二", "星期三", "星期四", "星期五", "星期六", "星期日"};
    if (!date.isValid())
        return QString();
    return date.toString(QStringLiteral("yyyy-MM-dd ")) + QString::fromUtf8(weekdays[date.dayOfWeek() - 1]);
}

void KVXDateAnimationClockTimer::ShowDateOn(vpe::CCaption* caption, const QDate& date) const
{
    const QString note = m_note ? m_note(date) : QString();
    caption->SetText(note.isEmpty() ? CaptionText(date) : CaptionText(date) + QStringLiteral(" · ") + note);
    const int total = totalDays();
    caption->SetProgress(total > 0 ? qBound(0.0, double(m_startDate.daysTo(date)) / total, 1.0) : 1.0);
}

void KVXDateAnimationClockTimer::FreezeAtDate(const QDate& date)
{
    FreezeAtTime(TimeForDate(date));
}

void KVXDateAnimationClockTimer::Update(unsigned int message, void* data)
{
    KVXFreeazbleClockTimer::Update(message, data);
    if (m_keyFrames)
        m_value = m_keyFrames->UpdateDateClockTimerByCameraClockTimer(m_value);
    if (KVXDateIndicator* dateTimeLine = m_dateTimeLine.get(); dateTimeLine && !IsPaused())
        dateTimeLine->SetIndicator(DateForTime(m_value));
    if (osg::ref_ptr<vpe::CCaption> caption; m_caption.lock(caption) && !IsPaused())
        ShowDateOn(caption.get(), DateForTime(m_value));
    if (!m_schedule)
        return;
    // No test of a positive end time: with an empty range any time ends a
    // preview.
    if (GetValue() > GetEndTime() && m_schedule->isPreviewing())
        m_schedule->stopSlot();
    if (!IsPaused())
        m_schedule->startAnimators();
}

KVXDateAnimationClockTimer* KVXDateAnimationClockTimer::GetOrCreate(const std::string& name)
{
    return KVXClockTimers::GetOrCreate<KVXDateAnimationClockTimer>(name);
}
