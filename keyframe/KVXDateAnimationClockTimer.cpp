#include "KVXDateAnimationClockTimer.h"

#include "KVXKeyFrameAnimationManager.h"
#include "animation/KVXAnimatorManager.h"
#include "host/model/PfGsUtility.h"
#include "host/vpe/render/CViewer.h"

#include <QMetaObject>

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

void KVXDateAnimationClockTimer::FreezeAtDate(const QDate& date)
{
    FreezeAtTime(TimeForDate(date));
}

void KVXDateAnimationClockTimer::Update(unsigned int message, void* data)
{
    KVXFreeazbleClockTimer::Update(message, data);
    m_value = KVXKeyFrameAnimationManager::GetInstance()->UpdateDateClockTimerByCameraClockTimer(m_value);
    if (!IsPaused() && m_dateTimeLineWidget) {
        QMetaObject::invokeMethod(m_dateTimeLineWidget, "SetIndicator", Qt::DirectConnection,
                                  Q_ARG(QDate, DateForTime(m_value)));
    }
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    // No test of a positive end time: with an empty range any time ends a
    // preview.
    if (GetValue() > GetEndTime() && schedule->isPreviewing())
        schedule->stopSlot();
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!IsPaused() && viewer) {
        schedule->startAnimators();
        viewer->SetDirty();
    }
}

KVXDateAnimationClockTimer* KVXDateAnimationClockTimer::GetOrCreate(const std::string& name)
{
    return getOrCreate<KVXDateAnimationClockTimer>(name);
}
