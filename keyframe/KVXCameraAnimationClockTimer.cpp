#include "KVXCameraAnimationClockTimer.h"

#include "KVXKeyFrameAnimationManager.h"

#include <QMetaObject>

KVXCameraAnimationClockTimer::KVXCameraAnimationClockTimer(vpe::CRefPtr<vpe::CClock> clock, std::string name)
    : KVXFreeazbleClockTimer(std::move(clock), std::move(name))
{
}

void KVXCameraAnimationClockTimer::Update(unsigned int message, void* data)
{
    KVXFreeazbleClockTimer::Update(message, data);
    if (IsFrozen())
        return;
    if (m_timeLineWidget) {
        const auto milliseconds = static_cast<unsigned int>(static_cast<qint64>(GetValue() * 1000.0));
        QMetaObject::invokeMethod(m_timeLineWidget, "SetTimeIndicator", Qt::DirectConnection,
                                  Q_ARG(unsigned int, milliseconds));
    }
    if (!IsPaused() && GetEndTime() > 0.0 && GetValue() > GetEndTime())
        KVXKeyFrameAnimationManager::GetInstance()->StopAnimation();
}

KVXCameraAnimationClockTimer* KVXCameraAnimationClockTimer::GetOrCreate(const std::string& name)
{
    return getOrCreate<KVXCameraAnimationClockTimer>(name);
}
