#pragma once

#include "CVideoMaker.h"

#include <QString>

namespace vpe {

// Records a viewer's frames into a video: the file, the picture size and the
// frame rate, and when the recording begins and ends. Between RecordBegin
// and RecordEnd every frame the viewer draws goes to the video maker; the
// maker's Finish completes the file.
class CVideoRecorder : public CReferenced {
public:
    explicit CVideoRecorder(CVideoMaker* maker) : m_maker(maker) {}

    void SetFileName(const QString& filePath) { m_fileName = filePath; }
    const QString& GetFileName() const { return m_fileName; }
    void SetFrameRate(unsigned int framesPerSecond) { m_frameRate = framesPerSecond; }
    unsigned int GetFrameRate() const { return m_frameRate; }
    void SetResolution(int width, int height);
    int GetWidth() const { return m_width; }
    int GetHeight() const { return m_height; }

    // Opens the video; false with the reason (nothing is recorded then).
    bool RecordBegin(double time, QString* error = nullptr);
    void RecordEnd(double time);
    bool IsRecording() const { return m_recording; }
    double GetBeginTime() const { return m_beginTime; }
    double GetEndTime() const { return m_endTime; }

    // A drawn frame; a failure stops the recording and is kept in LastError.
    void RecordFrame(const QImage& frame);
    const QString& LastError() const { return m_lastError; }
    CVideoMaker* GetVideoMaker() const { return m_maker.get(); }

protected:
    ~CVideoRecorder() override = default;

private:
    CRefPtr<CVideoMaker> m_maker;
    QString m_fileName;
    unsigned int m_frameRate = 24;
    int m_width = 1280;
    int m_height = 720;
    bool m_recording = false;
    double m_beginTime = 0.0;
    double m_endTime = 0.0;
    QString m_lastError;
};

} // namespace vpe
