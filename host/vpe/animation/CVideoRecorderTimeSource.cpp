#include "CVideoRecorderTimeSource.h"

namespace vpe {

double CVideoRecorderTimeSource::NextElapsed()
{
    ++m_frames;
    return 1.0 / double(m_frameRate);
}

} // namespace vpe
