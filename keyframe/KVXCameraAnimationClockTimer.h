#pragma once

#include "KVXFreeazbleClockTimer.h"

#include <QObject>
#include <QPointer>

// Drives camera key-frame playback: each tick moves the key-frame timeline's
// indicator to the clock's time in milliseconds and stops the camera
// animation once its end is passed.
class KVXCameraAnimationClockTimer : public KVXFreeazbleClockTimer {
public:
    KVXCameraAnimationClockTimer(vpe::CRefPtr<vpe::CClock> clock, std::string name);

    // The timeline is called through its invokable
    // SetTimeIndicator(unsigned int milliseconds); a timeline that goes away
    // is simply no longer called.
    void SetTimeLineWidget(QObject* timeLine) { m_timeLineWidget = timeLine; }
    QObject* GetTimeLineWidget() const { return m_timeLineWidget; }

    void Update(unsigned int message, void* data) override;

    static KVXCameraAnimationClockTimer* GetOrCreate(const std::string& name);

protected:
    ~KVXCameraAnimationClockTimer() override = default;

private:
    QPointer<QObject> m_timeLineWidget;
};
