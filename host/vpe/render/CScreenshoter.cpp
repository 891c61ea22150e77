#include "CScreenshoter.h"

#include "CPictureFile.h"
#include "CViewer.h"

#include <QDir>
#include <QFileInfo>

namespace vpe {

CScreenshoter::CScreenshoter(CViewer* viewer, bool withBackground, int)
    : m_viewer(viewer), m_withBackground(withBackground)
{
    if (viewer)
        SetOffscreenBuffer(viewer->GetActiveViewportWidth(), viewer->GetActiveViewportHeight());
}

void CScreenshoter::SetOffscreenBuffer(int width, int height)
{
    m_width = width;
    m_height = height;
}

bool CScreenshoter::CreateOffScreenshot(QImage* target, const QString& filePath, const CCamera* camera,
                                        QString* error)
{
    auto fail = [error](const QString& message) {
        if (error)
            *error = message;
        return false;
    };
    if (!m_viewer)
        return fail(QStringLiteral("there is no viewer to take a picture of"));
    QImage picture;
    if (!m_viewer->RenderImage(camera ? *camera : *m_viewer->GetCamera(), m_width, m_height, picture, error,
                               !m_withBackground))
        return false;
    if (!filePath.isEmpty()) {
        QDir().mkpath(QFileInfo(filePath).absolutePath());
        if (!CPictureFile::Save(picture, filePath, error))
            return false;
    }
    if (target)
        *target = picture;
    return true;
}

} // namespace vpe
