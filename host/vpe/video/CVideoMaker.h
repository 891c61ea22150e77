#pragma once

#include "host/vpe/core/CReferenced.h"

#include <QImage>
#include <QString>

#include <memory>

class ZVideoFFmpeg;

namespace vpe {

// Turns a viewer's frames into a video file through the encoder of the video
// plug-in (CVideoMakerFFmpegPlugin). Without the plug-in loaded nothing can be
// made and Begin says so.
class CVideoMaker : public CReferenced {
public:
    CVideoMaker();

    bool Begin(const QString& filePath, int width, int height, unsigned int framesPerSecond, QString* error);
    bool AddFrame(const QImage& frame, QString* error);
    // Completes the file; false with the reason (the partial file is gone).
    bool Finish(QString* error);
    // Drops the file being made.
    void Cancel();
    bool IsMaking() const;
    int FramesMade() const;

protected:
    ~CVideoMaker() override;

private:
    std::unique_ptr<ZVideoFFmpeg> m_encoder;
    // The video is made in a partial file beside it, which takes its place
    // only when it is finished: a failed or cancelled video leaves an
    // earlier file of that name as it was.
    QString m_target;
    QString m_partial;
};

} // namespace vpe
