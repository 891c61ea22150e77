#include "PfQtView.h"

#include "PfViewNavigator.h"
#include "host/model/PfGraphicsEvents.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CCamera.h"
#include "host/vpe/scene/CScene.h"

#include <QCoreApplication>
#include <QPainter>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QResizeEvent>
#include <QWheelEvent>

#include <cmath>

namespace {
// About 60 frames a second at most while something plays.
constexpr int kPollMilliseconds = 16;
// A press and release this many pixels apart is still a click.
constexpr int kClickSlack = 3;
constexpr double kDegreesPerPixel = 0.3;
// One notch of the wheel: 15 % nearer or further.
constexpr double kZoomPerNotch = 0.85;
} // namespace

PfQtView::PfQtView(vpe::CViewer* viewer, QWidget* parent) : QWidget(parent), m_viewer(viewer)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(64, 64);
    setFocusPolicy(Qt::StrongFocus);
    m_pollTimer = startTimer(kPollMilliseconds);
}

PfQtView::~PfQtView() = default;

void PfQtView::RequestRedraw()
{
    if (m_redrawPosted)
        return;
    m_redrawPosted = true;
    QCoreApplication::postEvent(this, new QEvent(PfGraphicsEvents::kRedrawEvent));
}

bool PfQtView::wantsFrame() const
{
    return m_viewer && (m_viewer->IsDirty() || m_viewer->GetAnimationManager()->GetNumAnimators() > 0);
}

bool PfQtView::event(QEvent* event)
{
    if (event->type() == PfGraphicsEvents::kRedrawEvent) {
        m_redrawPosted = false;
        update();
        return true;
    }
    return QWidget::event(event);
}

void PfQtView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (m_viewer) {
        m_error.clear();
        if (m_viewer->Frame(m_frame, &m_error))
            ++m_frameCount;
    }
    if (!m_frame.isNull() && m_error.isEmpty()) {
        painter.drawImage(rect(), m_frame);
        if (!m_overlay.isEmpty()) {
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setPen(QPen(QColor(255, 200, 0), 2.0));
            painter.drawPolyline(m_overlay);
            for (const QPointF& point : m_overlay)
                painter.drawEllipse(point, 4.0, 4.0);
        }
        return;
    }
    painter.fillRect(rect(), palette().window());
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, m_error);
}

void PfQtView::resizeEvent(QResizeEvent* event)
{
    if (m_viewer) {
        m_viewer->SetActiveViewportSize(event->size().width(), event->size().height());
        m_viewer->SetDirty();
    }
    QWidget::resizeEvent(event);
}

void PfQtView::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == m_pollTimer && isVisible() && wantsFrame())
        RequestRedraw();
    QWidget::timerEvent(event);
}

QPointF PfQtView::PixelOf(const osg::Vec3d& point) const
{
    const vpe::CCamera* camera = m_viewer->GetCamera();
    const double aspect = double(qMax(1, width())) / double(qMax(1, height()));
    const osg::Vec3d clip = point * (camera->GetViewMatrix() * camera->GetProjectionMatrix(aspect));
    return {(clip.x() + 1.0) / 2.0 * width(), (1.0 - clip.y()) / 2.0 * height()};
}

void PfQtView::SetOverlay(const QPolygonF& line)
{
    m_overlay = line;
    update();
}

osg::Vec3d PfQtView::pointAt(const QPointF& pixel) const
{
    osg::Vec3d point;
    if (m_locate && m_locate(pixel, point))
        return point;
    // Off the model and the ground: the middle of the scene.
    return m_viewer->GetScene()->GetRootNode()->getBound().center();
}

void PfQtView::moveCamera(const std::function<void(vpe::CCamera&)>& move)
{
    vpe::CRefPtr<vpe::CCamera> camera = m_viewer->GetCamera()->Clone();
    move(*camera);
    m_viewer->SetCamera(*camera);
    m_viewer->SetDirty();
    RequestRedraw();
}

void PfQtView::mousePressEvent(QMouseEvent* event)
{
    m_pressedAt = m_lastAt = event->pos();
    m_drag = Drag::None;
    setFocus();
    QWidget::mousePressEvent(event);
}

void PfQtView::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_viewer || event->buttons() == Qt::NoButton)
        return QWidget::mouseMoveEvent(event);
    if (m_drag == Drag::None) {
        if ((event->pos() - m_pressedAt).manhattanLength() <= kClickSlack)
            return;
        const bool slide = (event->buttons() & (Qt::MiddleButton | Qt::RightButton)) ||
                           (event->modifiers() & Qt::ShiftModifier);
        m_drag = slide ? Drag::Pan : Drag::Orbit;
        m_dragPoint = pointAt(m_pressedAt);
    }
    const QPoint from = m_lastAt;
    const QPoint to = event->pos();
    m_lastAt = to;
    if (m_drag == Drag::Orbit) {
        const QPoint moved = to - from;
        moveCamera([&](vpe::CCamera& camera) {
            PfViewNavigator::Orbit(camera, m_dragPoint, -moved.x() * kDegreesPerPixel,
                                   -moved.y() * kDegreesPerPixel);
        });
    } else {
        moveCamera([&](vpe::CCamera& camera) { PfViewNavigator::Pan(camera, m_dragPoint, from, to, size()); });
    }
}

void PfQtView::mouseReleaseEvent(QMouseEvent* event)
{
    const bool dragged = m_drag != Drag::None;
    m_drag = Drag::None;
    if (!dragged && (event->pos() - m_pressedAt).manhattanLength() <= kClickSlack) {
        if (event->button() == Qt::LeftButton)
            emit clicked(event->pos(), event->modifiers());
        else if (event->button() == Qt::RightButton)
            emit finishPressed();
    }
    QWidget::mouseReleaseEvent(event);
}

void PfQtView::wheelEvent(QWheelEvent* event)
{
    const double notches = event->angleDelta().y() / 120.0;
    if (!m_viewer || notches == 0.0)
        return;
    const osg::Vec3d point = pointAt(event->position());
    moveCamera([&](vpe::CCamera& camera) { PfViewNavigator::Zoom(camera, point, std::pow(kZoomPerNotch, notches)); });
    event->accept();
}

void PfQtView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        emit escapePressed();
        return;
    }
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        emit finishPressed();
        return;
    }
    QWidget::keyPressEvent(event);
}
