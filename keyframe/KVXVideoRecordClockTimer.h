#pragma once

#include "host/model/PfProgressMeter.h"
#include "host/vpe/animation/CClockTimer.h"

#include <QString>

#include <string>

class KVXKeyFramePlayback;

// The clock of a fly-through export: it runs the camera animation one video
// frame per tick, tells the progress ("正在导出视频：第N帧 / 共M帧（S秒）")
// in the status bar's progress meter or, for a document that wants it so, on
// the command prompt, and ends the recording through key-frame playback when
// it has reached the animation's length. Made paused.
class KVXVideoRecordClockTimer : public vpe::CClockTimer {
public:
    KVXVideoRecordClockTimer(vpe::CRefPtr<vpe::CClock> clock, std::string name);
    KVXVideoRecordClockTimer(const KVXVideoRecordClockTimer& other);
    KVXVideoRecordClockTimer& operator=(const KVXVideoRecordClockTimer& other);

    // Null without a current viewer.
    static KVXVideoRecordClockTimer* GetOrCreateClockTimer(const std::string& name);
    void SetKeyFramePlayback(KVXKeyFramePlayback* keyFrames) { m_keyFrames = keyFrames; }

    // From 0, running, with the application's graphics events held back.
    void BeginRecord(double seconds, unsigned int framesPerSecond);
    // Paused at 0 and idle again.
    void EndRecord();
    bool IsRecording() const { return m_length > 0.0 && m_frameRate > 0; }
    double GetRecordLength() const { return m_length; }
    unsigned int GetFrameRate() const { return m_frameRate; }

    void Update(unsigned int message, void* data) override;

    // "正在导出视频：第<frame>帧 / 共<total>帧（<whole seconds>秒）".
    static QString ProgressText(int frame, double seconds, unsigned int framesPerSecond);
    // Whether the export in progress shows its progress in the status bar
    // (otherwise on the prompt); chosen at BeginRecord.
    static bool IsProgressInStatusBar();

protected:
    ~KVXVideoRecordClockTimer() override = default;

private:
    void showProgress(int frame);

    double m_length = 0.0;
    unsigned int m_frameRate = 0;
    int m_shownFrame = -1;
    KVXKeyFramePlayback* m_keyFrames = nullptr;
    PfProgressMeter m_progress;
};
