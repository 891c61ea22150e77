#pragma once

#include "host/vpe/core/CReferenced.h"

#include <QImage>
#include <QString>
#include <QWidget>

namespace vpe {
class CViewer;
}

// The 3D view widget: shows a viewer's frames at the widget's size. A frame
// is drawn when the viewer is dirty or animators are playing; requests go
// through the event queue as the host's redraw event, so that several
// requests before the next paint make one frame.
class PfQtView : public QWidget {
    Q_OBJECT
public:
    explicit PfQtView(vpe::CViewer* viewer, QWidget* parent = nullptr);
    ~PfQtView() override;

    vpe::CViewer* GetViewer() const { return m_viewer.get(); }
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

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool wantsFrame() const;

    vpe::CRefPtr<vpe::CViewer> m_viewer;
    QImage m_frame;
    QString m_error;
    int m_frameCount = 0;
    int m_pollTimer = 0;
    bool m_redrawPosted = false;
    QPoint m_pressedAt;
};
