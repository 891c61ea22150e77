#pragma once

class KVXDateAnimationClockTimer;
class KVXDateIndicator;
class KVXKeyFramePlayback;
class KVXSchedulePlayback;

// The date clock that schedule playback and key-frame playback share: found
// or made on the current viewer by Get, and wired there to both playbacks
// and, when it has none, to the date timeline. The playbacks live above the
// clocks and give themselves here when they are made; the date timeline is
// given by whoever shows it, through the key-frame manager's
// SetDateLineWidget.
class KVXScheduleDateClock {
public:
    // Null without a current viewer.
    static KVXDateAnimationClockTimer* Get();

    static void SetSchedulePlayback(KVXSchedulePlayback* schedule);
    static void SetKeyFramePlayback(KVXKeyFramePlayback* keyFrames);
    static void SetDateLine(KVXDateIndicator* dateLine);
    // Null once the timeline is gone.
    static KVXDateIndicator* GetDateLine();
};
