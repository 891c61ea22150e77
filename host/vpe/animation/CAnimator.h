#pragma once

#include "CAnimation.h"
#include "CClockTimer.h"

#include <string>

namespace vpe {

// Plays an animation on a clock timer: the animation's time is the timer's
// value (wrapped into the animation's length when looping). A disabled or
// paused animator evaluates nothing; Reset makes the animation start again
// from 0 at the timer's current value.
class CAnimator : public CReferenced {
public:
    CAnimator(std::string name, CAnimation* animation, CClockTimer* timer);

    const std::string& GetName() const { return m_name; }
    CAnimation* GetAnimation() const { return m_animation.get(); }
    CClockTimer* GetTimer() const { return m_timer.get(); }

    void Enable() { m_enabled = true; }
    void Disable() { m_enabled = false; }
    bool IsEnabled() const { return m_enabled; }
    void Pause();
    void Resume();
    bool IsPaused() const { return m_paused; }
    void SetLoop(bool loop) { m_loop = loop; }
    bool GetLoop() const { return m_loop; }
    void Reset();

    // The animation's time now.
    double GetTime() const;
    // Evaluates the animation at its time, when enabled and not paused;
    // true when it did.
    bool Evaluate(unsigned int frame);

protected:
    ~CAnimator() override = default;

private:
    std::string m_name;
    CRefPtr<CAnimation> m_animation;
    CRefPtr<CClockTimer> m_timer;
    bool m_enabled = false;
    bool m_paused = false;
    bool m_loop = false;
    double m_offset = 0.0;
    double m_pausedAt = 0.0;
};

} // namespace vpe
