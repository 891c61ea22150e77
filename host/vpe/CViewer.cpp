#include "CViewer.h"

#include "CClockTimerManager.h"
#include "COffscreenContext.h"
#include "CWallClockTimeSource.h"
#include "CVectorText2D.h"

#include <osg/Image>
#include <osgViewer/Viewer>

#include <algorithm>

namespace vpe {

namespace {
// Larger renders fail in the driver or take all memory.
constexpr int kMaxRenderSide = 16384;
// The picture from the frame buffer's pixels: rows turned top-down (OpenGL
// gives them bottom-up), each factor x factor block averaged into one pixel,
// RGBA bytes into Qt's 32-bit pixels, in one pass.
QImage averagedDown(const osg::Image& drawn, int factor, bool withAlpha)
{
    const int width = drawn.s() / factor, height = drawn.t() / factor;
    QImage picture(width, height, withAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    const int samples = factor * factor;
    const int rowBytes = drawn.s() * 4;
    for (int y = 0; y < height; ++y) {
        auto* out = reinterpret_cast<QRgb*>(picture.scanLine(y));
        const unsigned char* top = drawn.data() + std::size_t(drawn.t() - (y + 1) * factor) * rowBytes;
        for (int x = 0; x < width; ++x) {
            unsigned int sum[4] = {0, 0, 0, 0};
            for (int dy = 0; dy < factor; ++dy) {
                const unsigned char* p = top + std::size_t(dy) * rowBytes + std::size_t(x) * factor * 4;
                for (int dx = 0; dx < factor; ++dx, p += 4) {
                    sum[0] += p[0];
                    sum[1] += p[1];
                    sum[2] += p[2];
                    sum[3] += p[3];
                }
            }
            out[x] = qRgba(int(sum[0] / samples), int(sum[1] / samples), int(sum[2] / samples),
                           withAlpha ? int(sum[3] / samples) : 255);
        }
    }
    return picture;
}

} // namespace

CViewer::CViewer()
    : m_scene(new CScene),
      m_camera(new CCamera),
      m_clock(new CClock),
      m_defaultTimer(new CClockTimer(m_clock, CClockTimerManager::kDefaultTimerName)),
      m_animations(new CAnimationManager(m_defaultTimer.get())),
      m_timeSource(new CWallClockTimeSource),
      m_videoMaker(new CVideoMaker),
      m_offscreenTool(new COffscreenTool(this))
{
    m_animations->SetVideoMaker(m_videoMaker.get());
    // The newest viewer's default timer is the one found by name.
    CClockTimerManager* timers = CClockTimerManager::GetInstance();
    timers->Remove(CClockTimerManager::kDefaultTimerName);
    timers->Add(m_defaultTimer.get());
    m_camera->SetPosition(CVec3<float>(-60000.0f, -80000.0f, 50000.0f));
    CVec3<float> direction = -m_camera->GetPosition();
    direction.normalize();
    m_camera->SetDirection(direction);
}

CViewer::~CViewer() { CClockTimerManager::GetInstance()->Remove(m_defaultTimer.get()); }

void CViewer::SetTimeSource(CTimeSource* source)
{
    m_timeSource = source ? source : new CWallClockTimeSource;
}

void CViewer::AdvanceFrame()
{
    m_clock->Tick(m_timeSource->NextElapsed());
    m_animations->EvaluateAnimators(m_clock->GetFrameNumber());
}

bool CViewer::Frame(QImage& image, QString* error)
{
    AdvanceFrame();
    if (!RenderFrame(image, error))
        return false;
    CVideoRecorder* recorder = m_animations->GetVideoRecorder();
    if (recorder && recorder->IsRecording())
        recorder->RecordFrame(image);
    return true;
}

void CViewer::SetCamera(const CCamera& camera)
{
    m_camera = camera.Clone();
    m_dirty = true;
}

void CViewer::SetActiveViewportSize(int width, int height)
{
    m_viewportWidth = std::max(1, width);
    m_viewportHeight = std::max(1, height);
    m_dirty = true;
}

void CViewer::SetSupersampling(int factor) { m_supersampling = std::clamp(factor, 1, 4); }

bool CViewer::prepare(int width, int height, QString* error)
{
    if (!COffscreenContext::MakeCurrent(error))
        return false;
    if (!m_viewer) {
        m_viewer = std::make_unique<osgViewer::Viewer>();
        m_viewer->setThreadingModel(osgViewer::Viewer::SingleThreaded);
        m_viewer->setLightingMode(osg::View::NO_LIGHT);
        m_viewer->setUpViewerAsEmbeddedInWindow(0, 0, width, height);
        m_viewer->getCamera()->setRenderTargetImplementation(osg::Camera::FRAME_BUFFER_OBJECT);
        m_viewer->getCamera()->setClearMask(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        // Labels sized in screen pixels have tiny model bounds: never cull
        // what looks small from afar.
        osg::Camera* camera = m_viewer->getCamera();
        camera->setCullingMode(camera->getCullingMode() & ~osg::CullSettings::SMALL_FEATURE_CULLING);
    }
    if (!m_target || m_target->s() != width || m_target->t() != height) {
        m_target = new osg::Image;
        m_target->allocateImage(width, height, 1, GL_RGBA, GL_UNSIGNED_BYTE);
        osg::Camera* camera = m_viewer->getCamera();
        camera->detach(osg::Camera::COLOR_BUFFER);
        camera->attach(osg::Camera::COLOR_BUFFER, m_target.get());
        camera->setViewport(0, 0, width, height);
        camera->dirtyAttachmentMap();
    }
    if (m_viewer->getSceneData() != m_scene->GetTopNode())
        m_viewer->setSceneData(m_scene->GetTopNode());
    COffscreenContext::BindDefaultFramebuffer();
    if (!m_viewer->isRealized()) {
        m_viewer->realize();
        if (osg::GraphicsContext* context = m_viewer->getCamera()->getGraphicsContext())
            context->setDefaultFboId(COffscreenContext::DefaultFramebuffer());
    }
    return true;
}

void CViewer::applyCamera(const CCamera& camera, int width, int height, bool transparentBackground)
{
    osg::Camera* view = m_viewer->getCamera();
    view->setViewMatrix(camera.GetViewMatrix());
    const double aspect = double(width) / double(height);
    if (camera.GetProjectionType() == CCamera::Orthographic) {
        const double half = camera.GetOrthoWindowHeight() * 0.5;
        view->setProjectionMatrixAsOrtho(-half * aspect, half * aspect, -half, half, camera.GetNearDistance(),
                                         camera.GetFarDistance());
    } else {
        view->setProjectionMatrixAsPerspective(camera.GetFieldOfView(), aspect, camera.GetNearDistance(),
                                               camera.GetFarDistance());
    }
    view->setClearColor(osg::Vec4(m_background.redF(), m_background.greenF(), m_background.blueF(),
                                  transparentBackground ? 0.0f : 1.0f));
}

bool CViewer::RenderImage(const CCamera& camera, int width, int height, QImage& image, QString* error,
                          bool transparentBackground)
{
    if (width < 1 || height < 1 || width > kMaxRenderSide || height > kMaxRenderSide) {
        if (error)
            *error = QStringLiteral("cannot render a picture of %1x%2 pixels").arg(width).arg(height);
        return false;
    }
    const int factor = std::max(1, std::min(m_supersampling, kMaxRenderSide / std::max(width, height)));
    if (!prepare(width * factor, height * factor, error))
        return false;
    applyCamera(camera, width, height, transparentBackground);
    if (CVectorText2D::GetPixelScale() != float(factor))
        CVectorText2D::SetPixelScale(float(factor), m_scene->GetTopNode());
    if (CLight* sun = m_scene->FindLight(CScene::kShadowLightName))
        sun->SetShadowDirty(false);
    m_viewer->frame();
    image = averagedDown(*m_target, factor, transparentBackground);
    return true;
}

bool CViewer::RenderFrame(QImage& image, QString* error)
{
    const bool rendered = RenderImage(*m_camera, m_viewportWidth, m_viewportHeight, image, error);
    if (rendered)
        m_dirty = false;
    return rendered;
}

} // namespace vpe
