#include "CClock.h"

#include <algorithm>

namespace vpe {

void CClock::AddObserver(IObserver* observer)
{
    if (observer && std::find(m_observers.begin(), m_observers.end(), observer) == m_observers.end())
        m_observers.push_back(observer);
}

void CClock::RemoveObserver(IObserver* observer)
{
    m_observers.erase(std::remove(m_observers.begin(), m_observers.end(), observer), m_observers.end());
}

void CClock::Tick(double elapsedSeconds)
{
    m_total += elapsedSeconds;
    ++m_frames;
    // A copy: a timer may be removed (and leave the clock) while told.
    const std::vector<IObserver*> observers = m_observers;
    for (IObserver* observer : observers) {
        if (std::find(m_observers.begin(), m_observers.end(), observer) != m_observers.end())
            observer->Update(kTick, &elapsedSeconds);
    }
}

} // namespace vpe
