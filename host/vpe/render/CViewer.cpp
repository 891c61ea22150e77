#include "CViewer.h"

#include "host/vpe/scene/CCaption.h"

#include "COffscreenContext.h"
#include "PicturePass.h"
#include "host/vpe/animation/CClockTimerManager.h"
#include "host/vpe/animation/CWallClockTimeSource.h"
#include "host/vpe/scene/CVectorText2D.h"

#include <osg/Camera>
#include <osg/Image>
#include <osg/Texture2D>
#include <osgViewer/Viewer>

#include <algorithm>

namespace vpe {

namespace {
// Larger renders fail in the driver or take all memory.
constexpr int kMaxRenderSide = 16384;
constexpr int kSupersamplingFactor = 2;

osg::Texture2D* colourTexture(int width, int height)
{
    auto* texture = new osg::Texture2D;
    texture->setTextureSize(width, height);
    texture->setInternalFormat(GL_RGBA8);
    texture->setSourceFormat(GL_RGBA);
    texture->setSourceType(GL_UNSIGNED_BYTE);
    // Edge smoothing samples between pixels; no mipmaps to make.
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    return texture;
}

osg::Camera* sceneCamera()
{
    auto* camera = new osg::Camera;
    camera->setReferenceFrame(osg::Camera::ABSOLUTE_RF);
    camera->setRenderOrder(osg::Camera::PRE_RENDER);
    camera->setRenderTargetImplementation(osg::Camera::FRAME_BUFFER_OBJECT);
    camera->setClearMask(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    camera->setComputeNearFarMode(osg::CullSettings::COMPUTE_NEAR_FAR_USING_BOUNDING_VOLUMES);
    // Labels sized in screen pixels have tiny model bounds: never cull
    // what looks small from afar.
    camera->setCullingMode(osg::CullSettings::DEFAULT_CULLING & ~osg::CullSettings::SMALL_FEATURE_CULLING);
    return camera;
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
      m_offscreenTool(new COffscreenTool(this)),
      m_picturePass(std::make_unique<PicturePass>())
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

CViewer::~CViewer()
{
    m_clock->Retire();
    CClockTimerManager::GetInstance()->Remove(m_defaultTimer.get());
}

void CViewer::SetTimeSource(CTimeSource* source)
{
    m_timeSource = source ? source : new CWallClockTimeSource;
}

void CViewer::AdvanceFrame() { advanceBy(m_timeSource->NextElapsed()); }

void CViewer::advanceBy(double elapsedSeconds)
{
    m_clock->Tick(elapsedSeconds);
    if (m_animations->EvaluateAnimators(m_clock->GetFrameNumber()))
        m_scene->SetShadowsDirty();
}

bool CViewer::Frame(QImage& image, QString* error) { return frame(image, error, m_timeSource->NextElapsed()); }

bool CViewer::FrameAtCurrentTime(QImage& image, QString* error) { return frame(image, error, 0.0); }

bool CViewer::frame(QImage& image, QString* error, double elapsedSeconds)
{
    advanceBy(elapsedSeconds);
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

void CViewer::SetDirty(bool dirty)
{
    m_dirty = dirty;
    if (dirty)
        m_scene->SetShadowsDirty();
}

bool CViewer::prepare(int width, int height, int factor, QString* error)
{
    if (!COffscreenContext::MakeCurrent(error))
        return false;
    if (!m_viewer) {
        m_viewer = std::make_unique<osgViewer::Viewer>();
        m_viewer->setThreadingModel(osgViewer::Viewer::SingleThreaded);
        m_viewer->setLightingMode(osg::View::NO_LIGHT);
        m_viewer->setUpViewerAsEmbeddedInWindow(0, 0, width, height);
        osg::Camera* camera = m_viewer->getCamera();
        camera->setRenderTargetImplementation(osg::Camera::FRAME_BUFFER_OBJECT);
        // The picture pass covers every pixel and places itself.
        camera->setClearMask(0);
        camera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
        m_sceneCamera = sceneCamera();
        osg::ref_ptr<osg::Group> passes = new osg::Group;
        passes->addChild(m_sceneCamera.get());
        passes->addChild(m_picturePass->GetNode());
        m_viewer->setSceneData(passes.get());
    }
    const int sceneWidth = width * factor, sceneHeight = height * factor;
    if (!m_sceneColour || m_sceneColour->getTextureWidth() != sceneWidth ||
        m_sceneColour->getTextureHeight() != sceneHeight) {
        m_sceneColour = colourTexture(sceneWidth, sceneHeight);
        m_sceneCamera->detach(osg::Camera::COLOR_BUFFER);
        m_sceneCamera->attach(osg::Camera::COLOR_BUFFER, m_sceneColour.get());
        m_sceneCamera->setViewport(0, 0, sceneWidth, sceneHeight);
        m_sceneCamera->dirtyAttachmentMap();
    }
    if (!m_target || m_target->s() != width || m_target->t() != height) {
        m_target = new osg::Image;
        m_target->allocateImage(width, height, 1, GL_RGBA, GL_UNSIGNED_BYTE);
        m_target->setInternalTextureFormat(GL_RGBA8);
        osg::Camera* camera = m_viewer->getCamera();
        camera->detach(osg::Camera::COLOR_BUFFER);
        camera->attach(osg::Camera::COLOR_BUFFER, m_target.get());
        camera->setViewport(0, 0, width, height);
        camera->dirtyAttachmentMap();
    }
    const unsigned int children = m_caption ? 2u : 1u;
    if (m_sceneCamera->getNumChildren() != children || m_sceneCamera->getChild(0) != m_scene->GetTopNode()) {
        m_sceneCamera->removeChildren(0, m_sceneCamera->getNumChildren());
        m_sceneCamera->addChild(m_scene->GetTopNode());
        // Over the scene, in the scene's picture: it is smoothed with it.
        if (m_caption)
            m_sceneCamera->addChild(m_caption->GetNode());
    }
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
    osg::Camera* view = m_sceneCamera.get();
    view->setViewMatrix(camera.GetViewMatrix());
    view->setProjectionMatrix(camera.GetProjectionMatrix(double(width) / double(height)));
    view->setClearColor(osg::Vec4(m_background.redF(), m_background.greenF(), m_background.blueF(),
                                  transparentBackground ? 0.0f : 1.0f));
}

void CViewer::readInto(QImage& picture, int width, int height, bool withAlpha)
{
    // The caller's last frame is let go first: when nobody else holds it (a
    // recorder copies what it keeps), its buffer takes this frame as well.
    picture = QImage();
    const QImage::Format format = withAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32;
    if (m_picture.width() != width || m_picture.height() != height || m_picture.format() != format ||
        !m_picture.isDetached())
        m_picture = QImage(width, height, format);
    // Same size and layout as allocated in prepare(), so the read-back goes
    // straight into the picture's pixels.
    m_target->setImage(width, height, 1, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, m_picture.bits(),
                       osg::Image::NO_DELETE);
    m_viewer->frame();
    picture = m_picture;
}

bool CViewer::RenderImage(const CCamera& camera, int width, int height, QImage& image, QString* error,
                          bool transparentBackground)
{
    if (width < 1 || height < 1 || width > kMaxRenderSide || height > kMaxRenderSide) {
        if (error)
            *error = QStringLiteral("cannot render a picture of %1x%2 pixels").arg(width).arg(height);
        return false;
    }
    const bool supersampled = m_antiAliasing == AntiAliasing::Supersampling;
    const int factor =
        supersampled ? std::max(1, std::min(kSupersamplingFactor, kMaxRenderSide / std::max(width, height))) : 1;
    if (!prepare(width, height, factor, error))
        return false;
    applyCamera(camera, width, height, transparentBackground);
    if (m_caption)
        m_caption->Layout(width * factor, height * factor);
    const PicturePass::Filter filter = supersampled ? PicturePass::Average
                                       : m_antiAliasing == AntiAliasing::EdgeSmoothing ? PicturePass::SmoothEdges
                                                                                       : PicturePass::Copy;
    m_picturePass->Set(m_sceneColour.get(), filter, factor, width, height, !transparentBackground);
    if (CVectorText2D::GetPixelScale() != float(factor))
        CVectorText2D::SetPixelScale(float(factor), m_scene->GetTopNode());
    readInto(image, width, height, transparentBackground);
    return true;
}

CCaption* CViewer::GetCaption()
{
    if (!m_caption)
        m_caption = new CCaption;
    return m_caption.get();
}

bool CViewer::RenderFrame(QImage& image, QString* error)
{
    const bool rendered = RenderImage(*m_camera, m_viewportWidth, m_viewportHeight, image, error);
    if (rendered)
        m_dirty = false;
    return rendered;
}

} // namespace vpe
