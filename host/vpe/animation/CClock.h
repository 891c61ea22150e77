#pragma once

#include "host/vpe/core/CReferenced.h"
#include "host/vpe/core/IObserver.h"

#include <vector>

namespace vpe {

// A viewer's clock: ticks once per frame with the seconds elapsed since the
// last frame and tells its observers (the clock timers) in the order they
// were added. It does not own them; a timer leaves its clock when it dies.
class CClock : public CReferenced {
public:
    enum Message : unsigned int { kTick = 1 };

    virtual void AddObserver(IObserver* observer);
    virtual void RemoveObserver(IObserver* observer);
    void Tick(double elapsedSeconds);
    double GetTotalTime() const { return m_total; }
    // Its viewer is gone: it will never tick again.
    void Retire() { m_retired = true; }
    bool IsRetired() const { return m_retired; }
    unsigned int GetFrameNumber() const { return m_frames; }

protected:
    ~CClock() override = default;

private:
    std::vector<IObserver*> m_observers;
    double m_total = 0.0;
    unsigned int m_frames = 0;
    bool m_retired = false;
};

} // namespace vpe
