#include "CAnimationTrack.h"

#include <algorithm>

namespace vpe {

void CAnimationTrack::AddKeyFrame(const CNodeKeyFrame& keyFrame)
{
    auto at = std::lower_bound(m_keyFrames.begin(), m_keyFrames.end(), keyFrame.time,
                               [](const CNodeKeyFrame& k, double time) { return k.time < time; });
    if (at != m_keyFrames.end() && at->time == keyFrame.time)
        *at = keyFrame;
    else
        m_keyFrames.insert(at, keyFrame);
}

bool CAnimationTrack::Interpolate(double time, osg::Vec3d& position, osg::Quat& rotation) const
{
    if (m_keyFrames.empty())
        return false;
    auto after = std::upper_bound(m_keyFrames.begin(), m_keyFrames.end(), time,
                                  [](double t, const CNodeKeyFrame& k) { return t < k.time; });
    if (after == m_keyFrames.begin()) {
        position = after->position;
        rotation = after->rotation;
        return true;
    }
    const CNodeKeyFrame& before = *(after - 1);
    if (after == m_keyFrames.end()) {
        position = before.position;
        rotation = before.rotation;
        return true;
    }
    const double span = after->time - before.time;
    const double f = span > 0.0 ? (time - before.time) / span : 1.0;
    position = before.position + (after->position - before.position) * f;
    rotation.slerp(f, before.rotation, after->rotation);
    return true;
}

} // namespace vpe
