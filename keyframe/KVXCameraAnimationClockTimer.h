#pragma once

#include "KVXFreeazbleClockTimer.h"
#include "KVXIndicatorLink.h"
#include "KVXTimeIndicator.h"

class KVXKeyFramePlayback;

// Drives camera key-frame playback: each tick moves the key-frame timeline's
// indicator to the clock's time in milliseconds, and once the end is passed
// key-frame playback (which gives itself to the clock) stops the animation.
class KVXCameraAnimationClockTimer : public KVXFreeazbleClockTimer {
public:
    KVXCameraAnimationClockTimer(vpe::CRefPtr<vpe::CClock> clock, std::string name);

    // A timeline that goes away is no longer called.
    void SetTimeLineWidget(KVXTimeIndicator* timeLine) { m_timeLine = KVXIndicatorLink(timeLine); }
    KVXTimeIndicator* GetTimeLineWidget() const { return m_timeLine.get(); }
    // Lives as long as the process (the manager is never destroyed).
    void SetKeyFramePlayback(KVXKeyFramePlayback* keyFrames) { m_keyFrames = keyFrames; }

    void Update(unsigned int message, void* data) override;

    static KVXCameraAnimationClockTimer* GetOrCreate(const std::string& name);

protected:
    ~KVXCameraAnimationClockTimer() override = default;

private:
    KVXIndicatorLink<KVXTimeIndicator> m_timeLine;
    KVXKeyFramePlayback* m_keyFrames = nullptr;
};
