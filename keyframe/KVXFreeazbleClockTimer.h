#pragma once

#include "KVXClockTimers.h"

#include "host/vpe/animation/CClockTimer.h"

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

private:
    bool m_frozen = false;
    int m_freezeTicks = 0;
    double m_endTime = 0.0;
    bool m_wrapAtEnd = false;
};
