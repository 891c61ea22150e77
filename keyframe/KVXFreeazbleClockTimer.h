#pragma once

#include "host/vpe/animation/CClockTimer.h"
#include "host/vpe/animation/CClockTimerManager.h"

#include <string>

// A clock timer that can be frozen at a chosen time: while frozen it does not
// advance, stays running for two more ticks so that every animator bound to
// it is evaluated (and drawn) at the frozen time, and pauses itself on the
// third. It also knows the length of what it drives (its end time) and can
// wrap back to 0 past it.
class KVXFreeazbleClockTimer : public vpe::CClockTimer {
public:
    KVXFreeazbleClockTimer(vpe::CRefPtr<vpe::CClock> clock, std::string name);

    void Update(unsigned int message, void* data) override;
    // Paused at 0, thawed, no wrap; the end time stays.
    virtual void Rewind();

    void SetFrozen(bool frozen) { m_frozen = frozen; }
    bool IsFrozen() const { return m_frozen; }
    void FreezeAtTime(double seconds);
    void SetEndTime(double seconds) { m_endTime = seconds; }
    double GetEndTime() const { return m_endTime; }
    void SetWrapAtEnd(bool wrap) { m_wrapAtEnd = wrap; }
    bool GetWrapAtEnd() const { return m_wrapAtEnd; }

protected:
    ~KVXFreeazbleClockTimer() override = default;

    // The registry's timer of that name when it is a Timer on the clock of a
    // viewer that still exists (the current one's, or that of another open
    // document: its end time and date range stay); otherwise a new Timer on
    // the current viewer's clock, registered under the name (a timer of
    // another class keeps its place; one of this class left on the clock of
    // a viewer that is gone is dropped, since it would never move again).
    // Null without a current viewer.
    template <class Timer>
    static Timer* getOrCreate(const std::string& name);

private:
    static vpe::CClock* currentViewerClock();

    bool m_frozen = false;
    int m_freezeTicks = 0;
    double m_endTime = 0.0;
    bool m_wrapAtEnd = false;
};

template <class Timer>
Timer* KVXFreeazbleClockTimer::getOrCreate(const std::string& name)
{
    vpe::CClock* clock = currentViewerClock();
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
