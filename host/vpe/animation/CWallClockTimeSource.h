#pragma once

#include "CTimeSource.h"

#include <QElapsedTimer>

namespace vpe {

// Real time: each frame lasts as long as it took since the previous one. The
// first frame after a reset lasts 0.
class CWallClockTimeSource : public CTimeSource {
public:
    double NextElapsed() override;
    void Reset() override { m_timer.invalidate(); }

private:
    QElapsedTimer m_timer;
};

} // namespace vpe
