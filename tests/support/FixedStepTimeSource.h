#pragma once

#include "host/vpe/animation/CTimeSource.h"

// Moves the clocks by the same step every frame (none by default, so that
// only a test's explicit ticks move time): frames never depend on how long
// they take on a loaded machine.
class FixedStepTimeSource : public vpe::CTimeSource {
public:
    explicit FixedStepTimeSource(double step = 0.0) : m_step(step) {}

    double NextElapsed() override { return m_step; }
    void Reset() override {}

private:
    double m_step;
};
