#pragma once

// What the camera and date clocks ask of key-frame playback, which lives
// above them (the key-frame animation manager) and gives itself to the
// clocks it sets up.
class KVXKeyFramePlayback {
public:
    // The date clock's time at the moment the camera (or video) clock has
    // reached, from the date key frames around it; t unchanged when no
    // camera animation drives the dates.
    virtual double UpdateDateClockTimerByCameraClockTimer(double t) = 0;
    // The camera animation has run past its end.
    virtual void StopAnimation() = 0;
    // The video clock has reached the end of the fly-through being exported.
    virtual void EndRecordVideo() = 0;

protected:
    ~KVXKeyFramePlayback() = default;
};
