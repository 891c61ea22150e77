#include "KVXAppliedPlane.h"

#include "KVXAnimPlaneVisitor.h"

#include <osg/Node>

KVXAppliedPlane::State KVXAppliedPlane::classify(const KVXAnimPlane& plane, const osg::BoundingBox& box)
{
    if (!box.valid())
        return State::Cutting;
    bool kept = false;
    bool clipped = false;
    for (unsigned int corner = 0; corner < 8; ++corner) {
        const double side = (osg::Vec3d(box.corner(corner)) - plane.point) * plane.normal;
        kept = kept || side >= 0.0;
        clipped = clipped || side < 0.0;
    }
    return kept && clipped ? State::Cutting : kept ? State::KeepsAll : State::ClipsAll;
}

bool KVXAppliedPlane::Set(osg::Node* node, const KVXAnimPlane& plane, const osg::BoundingBox& box, int index)
{
    const State state = classify(plane, box);
    if (index == m_index && m_state != State::Unknown) {
        if (state == m_state && (state != State::Cutting || plane == m_plane))
            return false;
    }
    KVXAnimPlaneVisitor visitor(&plane, false, index);
    node->accept(visitor);
    m_index = index;
    m_state = state;
    m_plane = plane;
    return true;
}

bool KVXAppliedPlane::Remove(osg::Node* node, int index)
{
    if (index == m_index && m_state == State::Removed)
        return false;
    KVXAnimPlaneVisitor visitor(nullptr, true, index);
    node->accept(visitor);
    m_index = index;
    m_state = State::Removed;
    return true;
}
