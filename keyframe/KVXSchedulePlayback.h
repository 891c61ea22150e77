#pragma once

// What the date clock asks of schedule playback on every tick: to end a
// preview that has run past the schedule and to keep the records' animators
// going. Schedule playback (the animator manager) lives above the clocks and
// gives itself to the date clock when it takes it.
class KVXSchedulePlayback {
public:
    virtual bool isPreviewing() const = 0;
    // Stops playback, a preview with the scene put back.
    virtual void stopSlot() = 0;
    // Enables every record's animator; the viewer draws again.
    virtual void startAnimators() = 0;

protected:
    ~KVXSchedulePlayback() = default;
};
