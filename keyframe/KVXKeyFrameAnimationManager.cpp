#include "KVXKeyFrameAnimationManager.h"

#include "KVXCameraAnimationClockTimer.h"
#include "KVXCameraKeyFramesTrack.h"
#include "KVXDateAnimationClockTimer.h"
#include "KVXDateKeyFramesTrack.h"
#include "KVXScheduleDateClock.h"
#include "animation/KVXAnimationNames.h"
#include "animation/KVXAnimatorManager.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfGsUtility.h"
#include "host/vpe/animation/CClockTimerManager.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/video/CVideoMakerFFmpegPlugin.h"

KVXIndicatorLink<KVXTimeIndicator> KVXKeyFrameAnimationManager::s_timeLineWidget;

KVXKeyFrameAnimationManager::KVXKeyFrameAnimationManager()
{
    vpe::CVideoMakerFFmpegPlugin::LoadPlugin();
    KVXScheduleDateClock::SetKeyFramePlayback(this);
}

KVXKeyFrameAnimationManager* KVXKeyFrameAnimationManager::GetInstance()
{
    static KVXKeyFrameAnimationManager* instance = new KVXKeyFrameAnimationManager();
    return instance;
}

void KVXKeyFrameAnimationManager::SetTimeLineWidget(KVXTimeIndicator* timeLine)
{
    s_timeLineWidget = KVXIndicatorLink(timeLine);
}

void KVXKeyFrameAnimationManager::SetDateLineWidget(KVXDateIndicator* dateLine)
{
    KVXScheduleDateClock::SetDateLine(dateLine);
}

KVXDateIndicator* KVXKeyFrameAnimationManager::GetDateLineWidget() { return KVXScheduleDateClock::GetDateLine(); }

void KVXKeyFrameAnimationManager::InitAnimationData()
{
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    if (!document || !document->GetDatabase())
        return;
    m_cameraTrack = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(document->GetDatabase());
    m_dateTrack = KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(document->GetDatabase());
    initClockTimers();
}

void KVXKeyFrameAnimationManager::UnInitAnimationData()
{
    m_cameraTrack = nullptr;
    m_dateTrack = nullptr;
    uninitClockTimers();
}

void KVXKeyFrameAnimationManager::initClockTimers()
{
    uninitClockTimers();
    m_cameraClock = KVXCameraAnimationClockTimer::GetOrCreate(KVXAnimationNames::kCameraAnimationClockTimer);
    if (m_cameraClock) {
        m_cameraClock->SetTimeLineWidget(GetTimeLineWidget());
        m_cameraClock->SetKeyFramePlayback(this);
        m_cameraClock->Pause(true);
    }
    // The schedule plays along with the camera.
    KVXScheduleDateClock::SetSchedulePlayback(KVXAnimatorManager::getInstance());
    m_dateClock = KVXScheduleDateClock::Get();
    if (m_dateClock) {
        m_dateClock->SetDateTimeLineWidget(GetDateLineWidget());
        m_dateClock->Pause(true);
    }
}

void KVXKeyFrameAnimationManager::uninitClockTimers()
{
    vpe::CClockTimerManager* registry = vpe::CClockTimerManager::GetInstance();
    registry->Remove(KVXAnimationNames::kCameraAnimationClockTimer);
    registry->Remove(KVXAnimationNames::kDateAnimationClockTimer);
    registry->Remove(KVXAnimationNames::kVideoRecordClockTimer);
    registry->Remove(KVXAnimationNames::kRouteAnimationClockTimer);
    m_cameraClock = nullptr;
    m_dateClock = nullptr;
    m_videoClock = nullptr;
}

void KVXKeyFrameAnimationManager::deleteCameraAnimator()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return;
    vpe::CAnimationManager* animations = viewer->GetAnimationManager();
    vpe::CAnimator* animator = animations->FindAnimator(KVXAnimationNames::kCameraAnimationName);
    if (!animator)
        return;
    animator->Disable();
    animations->DestroyAnimator(KVXAnimationNames::kCameraAnimationName);
    animations->DestroyAnimation(KVXAnimationNames::kCameraAnimationName);
}

void KVXKeyFrameAnimationManager::StopAnimation()
{
    if (!PfGsUtility::CurrentViewer())
        return;
    if (m_cameraClock)
        m_cameraClock->Rewind();
    if (KVXTimeIndicator* timeLine = GetTimeLineWidget())
        timeLine->SetTimeIndicator(0);
    if (m_cameraClock)
        m_cameraClock->Pause(true);
    deleteCameraAnimator();
    if (m_dateClock)
        m_dateClock->Rewind();
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    if (m_enableDateAnimation && schedule->getPlayState() != 0)
        schedule->stop();
    m_playState = Stopped;
}

vpe::CClockTimer* KVXKeyFrameAnimationManager::dateSourceClock() const
{
    if (m_videoClock && !m_videoClock->IsPaused())
        return m_videoClock.get();
    if (m_cameraClock && !m_cameraClock->IsPaused()) {
        if (m_dateClock)
            m_dateClock->SetFrozen(m_cameraClock->IsFrozen());
        return m_cameraClock.get();
    }
    return nullptr;
}

double KVXKeyFrameAnimationManager::UpdateDateClockTimerByCameraClockTimer(double t)
{
    if (!m_dateTrack || m_dateTrack->Size() < 2 || !m_dateClock)
        return t;
    vpe::CClockTimer* source = dateSourceClock();
    if (!source)
        return t;
    m_dateClock->Pause(false);
    const double cameraTime = source->GetValue();
    KVXKeyFrame* before = nullptr;
    KVXKeyFrame* after = nullptr;
    KVXKeyFrame* exact =
        m_dateTrack->GetKeyFrameAtTime(static_cast<unsigned int>(cameraTime * 1000.0), before, after);
    if (auto* date = KVXDateKeyFrame::Cast(exact))
        return m_dateClock->TimeForDate(date->GetDate());
    auto* dateBefore = KVXDateKeyFrame::Cast(before);
    auto* dateAfter = KVXDateKeyFrame::Cast(after);
    if (dateBefore && dateAfter) {
        const double t0 = m_dateClock->TimeForDate(dateBefore->GetDate());
        const double t1 = m_dateClock->TimeForDate(dateAfter->GetDate());
        const float s0 = dateBefore->GetTimeS();
        const float s1 = dateAfter->GetTimeS();
        if (s1 == s0)
            return t0;
        return (cameraTime - s0) * (t1 - t0) / (s1 - s0) + t0;
    }
    if (dateBefore)
        return m_dateClock->TimeForDate(dateBefore->GetDate());
    if (dateAfter)
        return m_dateClock->TimeForDate(dateAfter->GetDate());
    return t;
}
