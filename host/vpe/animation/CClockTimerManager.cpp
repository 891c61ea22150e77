#include "CClockTimerManager.h"

#include <algorithm>

namespace vpe {

const char* const CClockTimerManager::kDefaultTimerName = "VPE_DEFAULT_CLOCK_TIMER";

CClockTimerManager* CClockTimerManager::GetInstance()
{
    // Never destroyed: viewers unregister from it as they go, and the last
    // ones go with the document manager while the program's statics are
    // torn down, in no order we control.
    static CClockTimerManager* const instance = new CClockTimerManager;
    return instance;
}

CClockTimer* CClockTimerManager::Find(const std::string& name) const
{
    for (const auto& timer : m_timers) {
        if (timer->GetName() == name)
            return timer.get();
    }
    return nullptr;
}

void CClockTimerManager::Add(CClockTimer* timer)
{
    if (timer && std::find(m_timers.begin(), m_timers.end(), timer) == m_timers.end())
        m_timers.emplace_back(timer);
}

void CClockTimerManager::Remove(const std::string& name)
{
    m_timers.erase(std::remove_if(m_timers.begin(), m_timers.end(),
                                  [&name](const CRefPtr<CClockTimer>& t) { return t->GetName() == name; }),
                   m_timers.end());
}

void CClockTimerManager::Remove(CClockTimer* timer)
{
    m_timers.erase(std::remove(m_timers.begin(), m_timers.end(), timer), m_timers.end());
}

} // namespace vpe
