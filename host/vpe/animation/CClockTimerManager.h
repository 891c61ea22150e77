#pragma once

#include "CClockTimer.h"

#include <string>
#include <vector>

namespace vpe {

// The process's named clock timers; it holds the lasting reference to each.
// Several timers may carry one name: Find answers the first added.
class CClockTimerManager {
public:
    static const char* const kDefaultTimerName;

    static CClockTimerManager* GetInstance();

    CClockTimer* Find(const std::string& name) const;
    void Add(CClockTimer* timer);
    // Removes every timer of that name.
    void Remove(const std::string& name);
    void Remove(CClockTimer* timer);
    std::size_t Size() const { return m_timers.size(); }

private:
    std::vector<CRefPtr<CClockTimer>> m_timers;
};

} // namespace vpe
