#include "PfQtView.h"

#include "host/model/PfGraphicsEvents.h"
#include "host/vpe/render/CViewer.h"

#include <QCoreApplication>
#include <QPainter>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QResizeEvent>

namespace {
// About 60 frames a second at most while something plays.
constexpr int kPollMilliseconds = 16;
}

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

void PfQtView::mousePressEvent(QMouseEvent* event)
{
    m_pressedAt = event->pos();
    setFocus();
    QWidget::mousePressEvent(event);
}

void PfQtView::mouseReleaseEvent(QMouseEvent* event)
{
    // A press and release a few pixels apart is still a click.
    if (event->button() == Qt::LeftButton && (event->pos() - m_pressedAt).manhattanLength() <= 3)
        emit clicked(event->pos(), event->modifiers());
    QWidget::mouseReleaseEvent(event);
}

void PfQtView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        emit escapePressed();
        return;
    }
    QWidget::keyPressEvent(event);
}
