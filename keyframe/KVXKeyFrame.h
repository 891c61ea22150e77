#pragma once

#include "host/model/KVXBaseObject.h"

// A moment on the time axis of a roaming-video animation, in milliseconds
// from its start.
class KVXKeyFrame : public KVXBaseObject {
    PFRX_DECLARE_MEMBERS(KVXKeyFrame)
public:
    KVXKeyFrame();
    explicit KVXKeyFrame(unsigned int time);
    KVXKeyFrame(const KVXKeyFrame& other);

    int GetTime() const { return m_time; }
    float GetTimeS() const { return static_cast<float>(m_time) / 1000.0f; }
    void SetTime(int ms) { m_time = ms; }

    void getElementPropertys(KVXSaveLoadXml& xml) override;
    void setElementPropertys(KVXSaveLoadXml& xml) override;

private:
    int m_time;
};
