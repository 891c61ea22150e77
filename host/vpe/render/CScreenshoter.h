#pragma once

#include "host/vpe/scene/CCamera.h"

#include <QImage>
#include <QString>

namespace vpe {

class CViewer;

// Takes pictures of a viewer's scene off screen, from any camera, at the size
// of its off-screen buffer.
class CScreenshoter {
public:
    // withBackground: the scene's background colour behind the model, else
    // a transparent background; quality: the host's setting, unused here
    // (pictures are always anti-aliased).
    CScreenshoter(CViewer* viewer, bool withBackground, int quality);

    void SetOffscreenBuffer(int width, int height);
    int GetBufferWidth() const { return m_width; }
    int GetBufferHeight() const { return m_height; }

    // Renders from the camera; writes the picture to filePath when it is not
    // empty (PNG) and into target when it is given. False with the reason.
    bool CreateOffScreenshot(QImage* target, const QString& filePath, const CCamera* camera,
                             QString* error = nullptr);

private:
    CViewer* m_viewer;
    bool m_withBackground;
    int m_width = 0;
    int m_height = 0;
};

} // namespace vpe
