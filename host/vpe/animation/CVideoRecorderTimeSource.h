#pragma once

#include "CTimeSource.h"

namespace vpe {

// Video time: every frame lasts exactly one frame period, however long it
// took to draw and encode, so that a video plays at its real speed.
class CVideoRecorderTimeSource : public CTimeSource {
public:
    explicit CVideoRecorderTimeSource(unsigned int framesPerSecond = 24) { SetFrameRate(framesPerSecond); }

    double NextElapsed() override;
    // Back to frame 0.
    void Reset() override { m_frames = 0; }
    void SetFrameRate(unsigned int framesPerSecond) { m_frameRate = framesPerSecond ? framesPerSecond : 1; }
    unsigned int GetFrameRate() const { return m_frameRate; }
    unsigned long long GetFrameCount() const { return m_frames; }

private:
    unsigned int m_frameRate = 24;
    unsigned long long m_frames = 0;
};

} // namespace vpe
