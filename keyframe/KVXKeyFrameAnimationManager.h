#pragma once

#include "KVXCameraAnimationClockTimer.h"
#include "KVXDateAnimationClockTimer.h"
#include "KVXIndicatorLink.h"
#include "KVXKeyFramePlayback.h"

#include "host/vpe/animation/CClockTimer.h"

class KVXCameraKeyFramesTrack;
class KVXDateKeyFramesTrack;

// The process's controller of camera key-frame animation: the project's two
// key-frame tracks, the clocks that play them, and the mapping that lets the
// schedule's date clock follow the camera through the date key frames. It
// gives itself to the clocks it sets up as their key-frame playback.
class KVXKeyFrameAnimationManager : public KVXKeyFramePlayback {
public:
    enum PlayState { Stopped = 0, Playing = 1, Paused = 2 };

    static KVXKeyFrameAnimationManager* GetInstance();

    // The current document's tracks (made when missing) and the clocks on
    // the current viewer.
    void InitAnimationData();
    void UnInitAnimationData();

    // Back to the start: the camera clock rewound and paused, the camera
    // animation dropped, the date clock rewound and a playing schedule
    // stopped.
    void StopAnimation() override;

    PlayState GetPlayState() const { return m_playState; }
    void SetPlayState(PlayState state) { m_playState = state; }
    bool GetEnableDateAnimation() const { return m_enableDateAnimation; }
    void SetEnableDateAnimation(bool enable) { m_enableDateAnimation = enable; }

    // The date clock's time at the moment the camera (or the video) clock
    // has reached, from the date key frames around it; t unchanged when no
    // camera animation with at least two date key frames drives the dates.
    double UpdateDateClockTimerByCameraClockTimer(double t) override;

    KVXCameraKeyFramesTrack* GetCameraKeyFramesTrack() const { return m_cameraTrack; }
    KVXDateKeyFramesTrack* GetDateKeyFramesTrack() const { return m_dateTrack; }
    KVXCameraAnimationClockTimer* GetCameraAnimationClockTimer() const { return m_cameraClock.get(); }
    KVXDateAnimationClockTimer* GetDateAnimationClockTimer() const { return m_dateClock.get(); }
    // The clock of a video export; null until video export sets one up.
    vpe::CClockTimer* GetVideoRecordClockTimer() const { return m_videoClock.get(); }

    // The key-frame timeline and the date timeline the clocks move, set by
    // whoever shows them (the application, a test, the command line);
    // clocks set up from then on move them. Null once the widget is gone.
    static void SetTimeLineWidget(KVXTimeIndicator* timeLine);
    static KVXTimeIndicator* GetTimeLineWidget() { return s_timeLineWidget.get(); }
    static void SetDateLineWidget(KVXDateIndicator* dateLine);
    static KVXDateIndicator* GetDateLineWidget();

private:
    KVXKeyFrameAnimationManager();

    void initClockTimers();
    void uninitClockTimers();
    void deleteCameraAnimator();
    // The clock that drives the dates now, or null; copies the camera
    // clock's frozen state to the date clock when it is the camera's.
    vpe::CClockTimer* dateSourceClock() const;

    KVXCameraKeyFramesTrack* m_cameraTrack = nullptr;
    KVXDateKeyFramesTrack* m_dateTrack = nullptr;
    bool m_enableDateAnimation = true;
    // Held: a timer the registry lets go (its viewer went) must not leave
    // these dangling.
    vpe::CRefPtr<KVXCameraAnimationClockTimer> m_cameraClock;
    vpe::CRefPtr<KVXDateAnimationClockTimer> m_dateClock;
    vpe::CRefPtr<vpe::CClockTimer> m_videoClock;
    PlayState m_playState = Stopped;

    static KVXIndicatorLink<KVXTimeIndicator> s_timeLineWidget;
};
