#pragma once

namespace vpe {

// Something told of events by what it observes (a clock timer by its clock).
class IObserver {
public:
    virtual ~IObserver() = default;
    // message says what happened; data points to what goes with it (for a
    // clock tick: the elapsed seconds, a double).
    virtual void Update(unsigned int message, void* data) = 0;
};

} // namespace vpe
