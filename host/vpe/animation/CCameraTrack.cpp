#include "CCameraTrack.h"

namespace vpe {

void CCameraTrack::Apply(double time)
{
    osg::Vec3d position;
    osg::Quat rotation;
    if (!m_animable || !Interpolate(time, position, rotation))
        return;
    // The inverse rotation's rows are the rotation's columns.
    const osg::Matrixd matrix = osg::Matrixd::rotate(rotation.inverse()) * osg::Matrixd::translate(position);
    m_animable->ApplyMatrix(osg::Matrixf(matrix));
}

} // namespace vpe
