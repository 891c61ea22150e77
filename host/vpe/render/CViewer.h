#pragma once

#include "COffscreenTool.h"
#include "host/vpe/animation/CAnimationManager.h"
#include "host/vpe/animation/CClock.h"
#include "host/vpe/animation/CClockTimer.h"
#include "host/vpe/animation/CTimeSource.h"
#include "host/vpe/core/CReferenced.h"
#include "host/vpe/scene/CCamera.h"
#include "host/vpe/scene/CScene.h"
#include "host/vpe/video/CVideoMaker.h"

#include <QColor>
#include <QImage>
#include <QString>

#include <memory>

namespace osgViewer {
class Viewer;
}
namespace osg {
class Camera;
class Image;
class Texture2D;
}

namespace vpe {

class CCaption;
class PicturePass;

// Shows a scene through a camera. Without a screen it renders into frame
// buffer objects of the process's off-screen context; the active viewport is
// the size of the view on screen (or of the picture a command line renders).
//
// A render draws the scene into a colour texture, then one full-screen pass
// anti-aliases it into the picture that is read back (see AntiAliasing).
//
// The dirty flag tells a view that it wants a frame. SetDirty says the scene
// changed, which also makes the shadows be drawn again; a new camera or
// viewport size sets the flag without that, since the shadows do not depend
// on the view.
//
// A frame happens in this order: the clock ticks its timers with the length
// of the frame from the time source, the animation manager evaluates every
// enabled animator at its timer's value, then the scene is drawn. Animators
// that move nodes mark the shadows for drawing again.
class CViewer : public CReferenced {
public:
    CViewer();

    CClock* GetClock() const { return m_clock.get(); }
    // Registered as "VPE_DEFAULT_CLOCK_TIMER" for the viewer's life.
    CClockTimer* GetDefaultTimer() const { return m_defaultTimer.get(); }
    CAnimationManager* GetAnimationManager() const { return m_animations.get(); }
    CTimeSource* GetTimeSource() const { return m_timeSource.get(); }
    // Null puts the wall clock back.
    void SetTimeSource(CTimeSource* source);

    CVideoMaker* GetVideoMaker() const { return m_videoMaker.get(); }
    COffscreenTool* GetOffscreenTool() const { return m_offscreenTool.get(); }

    // Ticks the clock and evaluates the animators, without drawing.
    void AdvanceFrame();
    // A whole frame: advance, then draw the view's camera at the active
    // viewport size; a recording video gets the picture.
    bool Frame(QImage& image, QString* error = nullptr);
    // A whole frame in which time does not move: the clock ticks by nothing,
    // so the animators show their timers' values as they stand (a
    // recording's first frame, at its time 0).
    bool FrameAtCurrentTime(QImage& image, QString* error = nullptr);

    CScene* GetScene() const { return m_scene.get(); }
    // The caption drawn over every picture while it is shown (films and
    // their posters); made on first use, hidden.
    CCaption* GetCaption();
    bool HasCaption() const { return m_caption.valid(); }
    CCamera* GetCamera() const { return m_camera.get(); }
    // Takes the camera's parameters for the view.
    void SetCamera(const CCamera& camera);

    void SetActiveViewportSize(int width, int height);
    int GetActiveViewportWidth() const { return m_viewportWidth; }
    int GetActiveViewportHeight() const { return m_viewportHeight; }
    unsigned int GetMinimumFrameRate() const { return m_minimumFrameRate; }
    void SetMinimumFrameRate(unsigned int framesPerSecond) { m_minimumFrameRate = framesPerSecond; }
    void SetDirty(bool dirty = true);
    bool IsDirty() const { return m_dirty; }
    void SetBackgroundColor(const QColor& color) { m_background = color; }
    const QColor& GetBackgroundColor() const { return m_background; }
    enum class AntiAliasing {
        None,
        // The default: drawn at the picture's size, edges smoothed in the
        // final pass.
        EdgeSmoothing,
        // Drawn at twice the width and height and averaged down: finer detail
        // in thin lines, at about twice the time.
        Supersampling,
    };
    void SetAntiAliasing(AntiAliasing mode) { m_antiAliasing = mode; }
    AntiAliasing GetAntiAliasing() const { return m_antiAliasing; }

    // Renders the scene from the camera into a picture of that size, over the
    // background colour or a transparent background. False with the reason
    // when nothing can be rendered.
    bool RenderImage(const CCamera& camera, int width, int height, QImage& image, QString* error = nullptr,
                     bool transparentBackground = false);
    // Renders the view's own camera at the active viewport size; clears the
    // dirty flag.
    bool RenderFrame(QImage& image, QString* error = nullptr);

protected:
    ~CViewer() override;

private:
    void advanceBy(double elapsedSeconds);
    bool frame(QImage& image, QString* error, double elapsedSeconds);
    bool prepare(int width, int height, int factor, QString* error);
    void applyCamera(const CCamera& camera, int width, int height, bool transparentBackground);
    void readInto(QImage& picture, int width, int height, bool withAlpha);

    CRefPtr<CScene> m_scene;
    CRefPtr<CCaption> m_caption;
    CRefPtr<CCamera> m_camera;
    CRefPtr<CClock> m_clock;
    CRefPtr<CClockTimer> m_defaultTimer;
    CRefPtr<CAnimationManager> m_animations;
    CRefPtr<CTimeSource> m_timeSource;
    CRefPtr<CVideoMaker> m_videoMaker;
    CRefPtr<COffscreenTool> m_offscreenTool;
    std::unique_ptr<osgViewer::Viewer> m_viewer;
    // Draws the scene into m_sceneColour; the viewer's own camera draws the
    // picture pass into m_target, whose pixels are m_picture's.
    CRefPtr<osg::Camera> m_sceneCamera;
    CRefPtr<osg::Texture2D> m_sceneColour;
    std::unique_ptr<PicturePass> m_picturePass;
    CRefPtr<osg::Image> m_target;
    QImage m_picture;
    int m_viewportWidth = 1280;
    int m_viewportHeight = 720;
    unsigned int m_minimumFrameRate = 0;
    bool m_dirty = true;
    AntiAliasing m_antiAliasing = AntiAliasing::EdgeSmoothing;
    QColor m_background{178, 202, 226};
};

} // namespace vpe
