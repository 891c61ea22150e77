#pragma once

#include "CClock.h"

#include <string>

namespace vpe {

// A named timer on a clock: on every tick it advances its value (seconds) by
// the elapsed time times its scale, unless paused. Animators read its value.
// Subclasses may write the value and the reference time (the running time
// since the last reset, unscaled) directly.
class CClockTimer : public CReferenced, public IObserver {
public:
    CClockTimer(CRefPtr<CClock> clock, std::string name);

    void Update(unsigned int message, void* data) override;

    void Pause(bool paused) { m_paused = paused; }
    bool IsPaused() const { return m_paused; }
    // Back to 0; the paused state stays.
    void Reset();
    double GetValue() const { return m_value; }
    void SetScale(float scale) { m_scale = scale; }
    float GetScale() const { return m_scale; }
    const std::string& GetName() const { return m_name; }
    CClock* GetClock() const { return m_clock.get(); }

protected:
    ~CClockTimer() override;

    double m_value = 0.0;
    double m_referenceTime = 0.0;
    bool m_paused = false;

private:
    CRefPtr<CClock> m_clock;
    std::string m_name;
    float m_scale = 1.0f;
};

} // namespace vpe
