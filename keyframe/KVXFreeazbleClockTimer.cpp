#include "KVXFreeazbleClockTimer.h"

KVXFreeazbleClockTimer::KVXFreeazbleClockTimer(vpe::CRefPtr<vpe::CClock> clock, std::string name)
    : vpe::CClockTimer(std::move(clock), std::move(name))
{
}

void KVXFreeazbleClockTimer::Update(unsigned int message, void* data)
{
    if (m_frozen) {
        // Two ticks of grace: the frozen frame must be evaluated and drawn
        // before the timer stops.
        if (m_freezeTicks > 1)
            Pause(true);
        ++m_freezeTicks;
        return;
    }
    vpe::CClockTimer::Update(message, data);
    if (m_wrapAtEnd && m_value > m_endTime) {
        m_value = 0.0;
        m_referenceTime = 0.0;
    }
}

void KVXFreeazbleClockTimer::Rewind()
{
    m_paused = true;
    m_value = 0.0;
    m_referenceTime = 0.0;
    m_frozen = false;
    m_freezeTicks = 0;
    m_wrapAtEnd = false;
}

void KVXFreeazbleClockTimer::FreezeAtTime(double seconds)
{
    m_value = seconds;
    m_frozen = true;
    Pause(false);
    m_freezeTicks = 0;
}

