#include "CAnimation.h"

#include <algorithm>

namespace vpe {

void CAnimation::SetFrameCallback(CSceneNode* node, CFrameCallback* callback)
{
    m_node = node;
    m_callback = callback;
}

CSceneNode* CAnimation::GetCallbackNode() const
{
    osg::ref_ptr<CSceneNode> node;
    return m_node.lock(node) ? node.get() : nullptr;
}

CNodeTrack* CAnimation::CreateNodeTrack(CGroupNode* node)
{
    auto* track = new CNodeTrack(node);
    m_tracks.emplace_back(track);
    return track;
}

CCameraTrack* CAnimation::CreateCameraTrack()
{
    auto* track = new CCameraTrack;
    m_tracks.emplace_back(track);
    return track;
}

bool CAnimation::MovesScene() const
{
    return m_callback || std::any_of(m_tracks.begin(), m_tracks.end(),
                                     [](const CRefPtr<CAnimationTrack>& track) { return track->MovesScene(); });
}

void CAnimation::Evaluate(const CFrameTime& time)
{
    for (const auto& track : m_tracks)
        track->Apply(time.time);
    if (m_callback && !m_callback->WantsNode()) {
        (*m_callback)(nullptr, time);
    } else if (m_callback) {
        osg::ref_ptr<CSceneNode> node;
        m_node.lock(node);
        (*m_callback)(node.get(), time);
    }
}

} // namespace vpe
