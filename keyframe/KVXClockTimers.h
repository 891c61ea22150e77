#pragma once

#include "host/vpe/animation/CClockTimerManager.h"

#include <string>

namespace vpe {
class CClock;
}

// Where the module's clock timers are found or made: in the host's timer
// registry, on the current viewer's clock.
namespace KVXClockTimers {

// Null without a current viewer.
vpe::CClock* CurrentViewerClock();

// The registry's timer of that name when it is a Timer on the clock of a
// viewer that still exists (the current one's, or that of another open
// document: its end time and date range stay); otherwise a new Timer on the
// current viewer's clock, registered under the name (a timer of another
// class keeps its place; one of this class left on the clock of a viewer
// that is gone is dropped, since it would never move again). Null without a
// current viewer.
template <class Timer>
Timer* GetOrCreate(const std::string& name)
{
    vpe::CClock* clock = CurrentViewerClock();
    if (!clock)
        return nullptr;
    vpe::CClockTimerManager* registry = vpe::CClockTimerManager::GetInstance();
    if (auto* found = dynamic_cast<Timer*>(registry->Find(name))) {
        const vpe::CClock* own = found->GetClock();
        if (own == clock || (own && !own->IsRetired()))
            return found;
        registry->Remove(found);
    }
    auto* timer = new Timer(clock, name);
    registry->Add(timer);
    return timer;
}

} // namespace KVXClockTimers
