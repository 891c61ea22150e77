#include "CVideoMaker.h"

#include "CVideoMakerFFmpegPlugin.h"
#include "ZVideoFFmpeg.h"

namespace vpe {

namespace {
bool pluginLoaded = false;
}

bool CVideoMakerFFmpegPlugin::LoadPlugin()
{
    pluginLoaded = true;
    return true;
}

bool CVideoMakerFFmpegPlugin::IsLoaded() { return pluginLoaded; }

CVideoMaker::CVideoMaker() = default;

CVideoMaker::~CVideoMaker() = default;

bool CVideoMaker::Begin(const QString& filePath, int width, int height, unsigned int framesPerSecond,
                        QString* error)
{
    if (!CVideoMakerFFmpegPlugin::IsLoaded()) {
        if (error)
            *error = QStringLiteral("no video encoder is loaded");
        return false;
    }
    if (!m_encoder)
        m_encoder = std::make_unique<ZVideoFFmpeg>();
    return m_encoder->Open(filePath, width, height, static_cast<int>(framesPerSecond), error);
}

bool CVideoMaker::AddFrame(const QImage& frame, QString* error)
{
    if (!IsMaking()) {
        if (error)
            *error = QStringLiteral("no video is being made");
        return false;
    }
    return m_encoder->WriteFrame(frame, error);
}

bool CVideoMaker::Finish(QString* error)
{
    if (!IsMaking()) {
        if (error)
            *error = QStringLiteral("no video is being made");
        return false;
    }
    return m_encoder->Finish(error);
}

void CVideoMaker::Cancel()
{
    if (m_encoder)
        m_encoder->Cancel();
}

bool CVideoMaker::IsMaking() const { return m_encoder && m_encoder->IsOpen(); }

int CVideoMaker::FramesMade() const { return m_encoder ? m_encoder->FramesWritten() : 0; }

} // namespace vpe
