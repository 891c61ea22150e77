#include "CNodeTrack.h"

namespace vpe {

void CNodeTrack::Apply(double time)
{
    osg::ref_ptr<CGroupNode> node;
    osg::Vec3d position;
    osg::Quat rotation;
    if (!m_node.lock(node) || !Interpolate(time, position, rotation))
        return;
    node->setMatrix(osg::Matrixd::rotate(rotation) * osg::Matrixd::translate(position));
}

} // namespace vpe
