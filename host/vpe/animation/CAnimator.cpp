#include "CAnimator.h"

#include <cmath>

namespace vpe {

CAnimator::CAnimator(std::string name, CAnimation* animation, CClockTimer* timer)
    : m_name(std::move(name)), m_animation(animation), m_timer(timer)
{
}

void CAnimator::Pause()
{
    if (m_paused)
        return;
    m_pausedAt = GetTime();
    m_paused = true;
}

void CAnimator::Resume()
{
    if (!m_paused)
        return;
    // Carry on from where it stood, whatever the timer did meanwhile.
    m_paused = false;
    m_offset = (m_timer ? m_timer->GetValue() : 0.0) - m_pausedAt;
}

void CAnimator::Reset()
{
    m_offset = m_timer ? m_timer->GetValue() : 0.0;
    m_pausedAt = 0.0;
}

double CAnimator::GetTime() const
{
    if (m_paused)
        return m_pausedAt;
    double time = (m_timer ? m_timer->GetValue() : 0.0) - m_offset;
    const double length = m_animation ? m_animation->GetLength() : 0.0;
    if (m_loop && length > 0.0) {
        time = std::fmod(time, length);
        if (time < 0.0)
            time += length;
    }
    return time;
}

bool CAnimator::Evaluate(unsigned int frame)
{
    if (!m_enabled || m_paused || !m_animation)
        return false;
    CFrameTime time;
    time.time = static_cast<float>(GetTime());
    time.frame = frame;
    m_animation->Evaluate(time);
    return true;
}

} // namespace vpe
