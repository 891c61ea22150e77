#pragma once

#include "CAnimation.h"
#include "CAnimator.h"
#include "host/vpe/video/CVideoRecorder.h"

#include <map>
#include <string>

namespace vpe {

// A viewer's animations and animators, by name. An animator is bound to a
// clock timer (the viewer's default timer when none is given); every frame
// the manager evaluates the enabled ones, in name order.
class CAnimationManager : public CReferenced {
public:
    explicit CAnimationManager(CClockTimer* defaultTimer) : m_defaultTimer(defaultTimer) {}

    // Null when the name is taken.
    CAnimation* CreateAnimation(const std::string& name, double length);
    CAnimation* FindAnimation(const std::string& name) const;
    void DestroyAnimation(const std::string& name);

    // Null when the name is taken or there is no such animation.
    CAnimator* CreateAnimator(const std::string& name, CAnimation* animation, CClockTimer* timer = nullptr);
    CAnimator* FindAnimator(const std::string& name) const;
    void DestroyAnimator(const std::string& name);
    std::size_t GetNumAnimators() const { return m_animators.size(); }

    // True when an animator that moves scene nodes (node tracks or a frame
    // callback) was evaluated.
    bool EvaluateAnimators(unsigned int frame);

    // The recorder of the viewer's video, made on first use over its maker.
    CVideoRecorder* GetOrCreateVideoRecorder();
    CVideoRecorder* GetVideoRecorder() const { return m_recorder.get(); }
    void SetVideoMaker(CVideoMaker* maker) { m_maker = maker; }

protected:
    ~CAnimationManager() override = default;

private:
    CClockTimer* m_defaultTimer;
    std::map<std::string, CRefPtr<CAnimation>> m_animations;
    std::map<std::string, CRefPtr<CAnimator>> m_animators;
    CRefPtr<CVideoMaker> m_maker;
    CRefPtr<CVideoRecorder> m_recorder;
};

} // namespace vpe
