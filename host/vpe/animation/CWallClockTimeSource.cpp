#include "CWallClockTimeSource.h"

namespace vpe {

double CWallClockTimeSource::NextElapsed()
{
    if (!m_timer.isValid()) {
        m_timer.start();
        return 0.0;
    }
    return double(m_timer.restart()) * 0.001;
}

} // namespace vpe
