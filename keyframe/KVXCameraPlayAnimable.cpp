#include "KVXCameraPlayAnimable.h"

void KVXCameraPlayAnimable::ApplyMatrix(const osg::Matrixf& matrix)
{
    vpe::CCamera* camera = GetCamera();
    if (!camera)
        return;
    const float* m = matrix.ptr();
    // The eye is the origin as a row vector times the matrix; the axes are
    // combined with the matrix's rows, that is read from its columns.
    const float w = m[15] != 0.0f ? m[15] : 1.0f;
    camera->SetPosition(vpe::CVec3<float>(m[12] / w, m[13] / w, m[14] / w));
    if (!IsDirectionLocked())
        camera->SetDirection(vpe::CVec3<float>(m[1], m[5], m[9]));
    camera->SetUpDirection(vpe::CVec3<float>(m[2], m[6], m[10]), true);
}
