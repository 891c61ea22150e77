#include "KVXCameraAnimationClockTimer.h"

#include "KVXKeyFramePlayback.h"

KVXCameraAnimationClockTimer::KVXCameraAnimationClockTimer(vpe::CRefPtr<vpe::CClock> clock, std::string name)
    : KVXFreeazbleClockTimer(std::move(clock), std::move(name))
{
}

void KVXCameraAnimationClockTimer::Update(unsigned int message, void* data)
{
    KVXFreeazbleClockTimer::Update(message, data);
    if (IsFrozen())
        return;
    if (KVXTimeIndicator* timeLine = m_timeLine.get()) {
        const auto milliseconds = static_cast<unsigned int>(static_cast<qint64>(GetValue() * 1000.0));
        timeLine->SetTimeIndicator(milliseconds);
    }
    if (m_keyFrames && !IsPaused() && GetEndTime() > 0.0 && GetValue() > GetEndTime())
        m_keyFrames->StopAnimation();
}

KVXCameraAnimationClockTimer* KVXCameraAnimationClockTimer::GetOrCreate(const std::string& name)
{
    return KVXClockTimers::GetOrCreate<KVXCameraAnimationClockTimer>(name);
}
