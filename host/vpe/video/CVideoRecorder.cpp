#include "CVideoRecorder.h"

namespace vpe {

void CVideoRecorder::SetResolution(int width, int height)
{
    m_width = width;
    m_height = height;
}

bool CVideoRecorder::RecordBegin(double time, QString* error)
{
    m_lastError.clear();
    m_recording = false;
    if (!m_maker || !m_maker->Begin(m_fileName, m_width, m_height, m_frameRate, &m_lastError)) {
        if (m_lastError.isEmpty())
            m_lastError = QStringLiteral("there is no video maker");
        if (error)
            *error = m_lastError;
        return false;
    }
    m_beginTime = time;
    m_recording = true;
    return true;
}

void CVideoRecorder::RecordEnd(double time)
{
    m_endTime = time;
    m_recording = false;
}

void CVideoRecorder::RecordFrame(const QImage& frame)
{
    if (!m_recording)
        return;
    QString error;
    if (!m_maker->AddFrame(frame, &error)) {
        m_lastError = error;
        m_recording = false;
    }
}

} // namespace vpe
