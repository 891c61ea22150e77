#include "CAnimationManager.h"

#include <vector>

namespace vpe {

CAnimation* CAnimationManager::CreateAnimation(const std::string& name, double length)
{
    if (m_animations.count(name))
        return nullptr;
    auto* animation = new CAnimation(name, length);
    m_animations.emplace(name, animation);
    return animation;
}

CAnimation* CAnimationManager::FindAnimation(const std::string& name) const
{
    auto it = m_animations.find(name);
    return it == m_animations.end() ? nullptr : it->second.get();
}

void CAnimationManager::DestroyAnimation(const std::string& name) { m_animations.erase(name); }

CAnimator* CAnimationManager::CreateAnimator(const std::string& name, CAnimation* animation, CClockTimer* timer)
{
    if (!animation || m_animators.count(name))
        return nullptr;
    auto* animator = new CAnimator(name, animation, timer ? timer : m_defaultTimer);
    m_animators.emplace(name, animator);
    return animator;
}

CAnimator* CAnimationManager::FindAnimator(const std::string& name) const
{
    auto it = m_animators.find(name);
    return it == m_animators.end() ? nullptr : it->second.get();
}

void CAnimationManager::DestroyAnimator(const std::string& name) { m_animators.erase(name); }

bool CAnimationManager::EvaluateAnimators(unsigned int frame)
{
    // Held while evaluated: a callback may destroy animators (a preview that
    // ends stops the schedule).
    std::vector<CRefPtr<CAnimator>> animators;
    animators.reserve(m_animators.size());
    for (const auto& entry : m_animators)
        animators.push_back(entry.second);
    bool moved = false;
    for (const auto& animator : animators)
        moved |= animator->Evaluate(frame) && animator->GetAnimation()->MovesScene();
    return moved;
}

} // namespace vpe

namespace vpe {

CVideoRecorder* CAnimationManager::GetOrCreateVideoRecorder()
{
    if (!m_recorder)
        m_recorder = new CVideoRecorder(m_maker.get());
    return m_recorder.get();
}

} // namespace vpe
