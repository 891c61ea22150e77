#pragma once

#include <QObject>

// Installed on the application while a video is recorded: it swallows the
// host's own redraw events and the 3D view's paint events, so that the view
// is drawn only by the recorder, frame by frame.
class PfApGrxEventFilter : public QObject {
    Q_OBJECT
public:
    PfApGrxEventFilter() = default;

    // The range of event types the host posts for its graphics.
    static constexpr int kFirstGraphicsEvent = 15001;
    static constexpr int kLastGraphicsEvent = 15010;

    bool eventFilter(QObject* watched, QEvent* event) override;
};
