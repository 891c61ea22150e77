#include "CVideoMaker.h"

#include "CVideoMakerFFmpegPlugin.h"
#include "ZVideoFFmpeg.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>

namespace vpe {

namespace {
bool pluginLoaded = false;

// Beside the video, hidden, and this process's own.
QString partialPathFor(const QString& filePath)
{
    const QFileInfo target(filePath);
    return target.dir().filePath(
        QStringLiteral(".%1.%2.part").arg(target.fileName()).arg(QCoreApplication::applicationPid()));
}

// The encoder names the file it writes; the user knows the video's name.
bool renamed(bool ok, QString* error, const QString& partial, const QString& target)
{
    if (!ok && error)
        error->replace(partial, target);
    return ok;
}
} // namespace

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
    if (m_encoder->IsOpen())
        return m_encoder->Open(filePath, width, height, static_cast<int>(framesPerSecond), error);
    m_target = filePath;
    m_partial = partialPathFor(filePath);
    return renamed(m_encoder->Open(m_partial, width, height, static_cast<int>(framesPerSecond), error), error,
                   m_partial, m_target);
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
    if (!renamed(m_encoder->Finish(error), error, m_partial, m_target))
        return false;
    // One step on the same file system: the old video, or the new one.
    if (std::rename(QFile::encodeName(m_partial).constData(), QFile::encodeName(m_target).constData()) != 0) {
        QFile::remove(m_partial);
        if (error)
            *error = QStringLiteral("Cannot write the video file \"%1\"").arg(m_target);
        return false;
    }
    return true;
}

void CVideoMaker::Cancel()
{
    if (m_encoder)
        m_encoder->Cancel();
}

bool CVideoMaker::IsMaking() const { return m_encoder && m_encoder->IsOpen(); }

int CVideoMaker::FramesMade() const { return m_encoder ? m_encoder->FramesWritten() : 0; }

} // namespace vpe
