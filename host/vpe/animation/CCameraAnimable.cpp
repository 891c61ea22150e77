#include "CCameraAnimable.h"

namespace vpe {

void CCameraAnimable::ApplyMatrix(const osg::Matrixf& matrix)
{
    if (!m_camera)
        return;
    const float* m = matrix.ptr();
    const float w = m[15] != 0.0f ? m[15] : 1.0f;
    m_camera->SetPosition(CVec3<float>(m[12] / w, m[13] / w, m[14] / w));
    if (!m_directionLocked)
        m_camera->SetDirection(CVec3<float>(m[1], m[5], m[9]));
    m_camera->SetUpDirection(CVec3<float>(m[2], m[6], m[10]), true);
}

} // namespace vpe
