#include "CClockTimer.h"

namespace vpe {

CClockTimer::CClockTimer(CRefPtr<CClock> clock, std::string name) : m_clock(std::move(clock)), m_name(std::move(name))
{
    if (m_clock)
        m_clock->AddObserver(this);
}

CClockTimer::~CClockTimer()
{
    if (m_clock)
        m_clock->RemoveObserver(this);
}

void CClockTimer::Update(unsigned int message, void* data)
{
    if (message != CClock::kTick || !data || m_paused)
        return;
    const double elapsed = *static_cast<const double*>(data);
    m_value += elapsed * m_scale;
    m_referenceTime += elapsed;
}

void CClockTimer::Reset()
{
    m_value = 0.0;
    m_referenceTime = 0.0;
}

} // namespace vpe
