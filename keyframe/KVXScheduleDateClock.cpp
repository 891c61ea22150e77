#include "KVXScheduleDateClock.h"

#include "KVXDateAnimationClockTimer.h"
#include "KVXIndicatorLink.h"

#include "animation/KVXAnimationNames.h"

namespace {

struct Wiring {
    KVXSchedulePlayback* schedule = nullptr;
    KVXKeyFramePlayback* keyFrames = nullptr;
    KVXIndicatorLink<KVXDateIndicator> dateLine;
};

Wiring& wiring()
{
    static Wiring instance;
    return instance;
}

} // namespace

KVXDateAnimationClockTimer* KVXScheduleDateClock::Get()
{
    KVXDateAnimationClockTimer* clock =
        KVXDateAnimationClockTimer::GetOrCreate(KVXAnimationNames::kDateAnimationClockTimer);
    if (!clock)
        return nullptr;
    clock->SetSchedulePlayback(wiring().schedule);
    clock->SetKeyFramePlayback(wiring().keyFrames);
    if (!clock->GetDateTimeLineWidget())
        clock->SetDateTimeLineWidget(GetDateLine());
    return clock;
}

void KVXScheduleDateClock::SetSchedulePlayback(KVXSchedulePlayback* schedule) { wiring().schedule = schedule; }

void KVXScheduleDateClock::SetKeyFramePlayback(KVXKeyFramePlayback* keyFrames) { wiring().keyFrames = keyFrames; }

void KVXScheduleDateClock::SetDateLine(KVXDateIndicator* dateLine) { wiring().dateLine = KVXIndicatorLink(dateLine); }

KVXDateIndicator* KVXScheduleDateClock::GetDateLine() { return wiring().dateLine.get(); }
