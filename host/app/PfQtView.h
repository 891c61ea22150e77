#pragma once

#include "host/vpe/core/CReferenced.h"

#include <QImage>
#include <QPolygonF>
#include <QString>
#include <QWidget>

#include <osg/Vec3d>

#include <functional>

namespace vpe {
class CCamera;
class CViewer;
} // namespace vpe

// The 3D view widget: shows a viewer's frames at the widget's size. A frame
// is drawn when the viewer is dirty or animators are playing; requests go
// through the event queue as the host's redraw event, so that several
// requests before the next paint make one frame.
//
// The mouse moves the camera: dragging with the left button turns the view
// about the point under the cursor, dragging with the middle or right
// button (or Shift and the left) slides it, the wheel comes nearer to or
// goes away from the point under the cursor. A click is told, not handled.
class PfQtView : public QWidget {
    Q_OBJECT
public:
    explicit PfQtView(vpe::CViewer* viewer, QWidget* parent = nullptr);
    ~PfQtView() override;

    vpe::CViewer* GetViewer() const { return m_viewer.get(); }
    // Finds the world point drawn at a pixel (the model's surface); without
    // it the view turns about the middle of the scene.
    using PointLocator = std::function<bool(const QPointF& pixel, osg::Vec3d& point)>;
    void SetPointLocator(PointLocator locator) { m_locate = std::move(locator); }
    // Where a world point is drawn in the view now.
    QPointF PixelOf(const osg::Vec3d& point) const;
    // A line drawn over the picture, in pixels (a route being picked).
    void SetOverlay(const QPolygonF& line);
    void RequestRedraw();
    // The picture shown now; null before the first frame.
    const QImage& LastFrame() const { return m_frame; }
    // Why the last frame could not be drawn; empty when it was.
    const QString& LastError() const { return m_error; }
    // How many frames were drawn so far.
    int FrameCount() const { return m_frameCount; }

signals:
    // A click (pressed and released without moving) at a pixel of the view.
    void clicked(const QPoint& pixel, Qt::KeyboardModifiers modifiers);
    void escapePressed();
    // Return, Enter or a right click without a drag: the user is done.
    void finishPressed();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    enum class Drag { None, Orbit, Pan };

    bool wantsFrame() const;
    // The point under the pixel, or the middle of the scene at its depth.
    osg::Vec3d pointAt(const QPointF& pixel) const;
    // The camera changed by the move, the view redrawn.
    void moveCamera(const std::function<void(vpe::CCamera&)>& move);

    vpe::CRefPtr<vpe::CViewer> m_viewer;
    QImage m_frame;
    QString m_error;
    int m_frameCount = 0;
    int m_pollTimer = 0;
    bool m_redrawPosted = false;
    QPoint m_pressedAt;
    QPoint m_lastAt;
    Drag m_drag = Drag::None;
    osg::Vec3d m_dragPoint;
    PointLocator m_locate;
    QPolygonF m_overlay;
};
