#pragma once

#include <QObject>

// Installed on the application while a video is recorded: it swallows the
// host's own graphics events and the 3D view's paint events, so that the
// view is drawn only by the recorder, frame by frame. The view is known by
// its class name at run time: the module does not depend on the
// application layer that owns it.
class PfApGrxEventFilter : public QObject {
    Q_OBJECT
public:
    PfApGrxEventFilter() = default;

    bool eventFilter(QObject* watched, QEvent* event) override;
};
