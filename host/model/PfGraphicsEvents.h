#pragma once

#include <QEvent>

// The Qt event numbers of the host's graphics, and how its 3D view widget is
// known at run time. Whoever needs to hold the view's drawing back (a video
// being recorded) goes by these, without depending on the application layer
// that owns the widget.
namespace PfGraphicsEvents {

// The host's own graphics events are numbered from 15001 to 15010.
inline constexpr int kFirstGraphicsEvent = 15001;
inline constexpr int kLastGraphicsEvent = 15010;
// A redraw the 3D view posts to itself, so that several requests before the
// next paint make one frame.
inline constexpr QEvent::Type kRedrawEvent = static_cast<QEvent::Type>(kFirstGraphicsEvent);

// The class name of the 3D view widget, as QObject::inherits() checks it.
inline constexpr const char* kViewClassName = "PfQtView";

inline bool IsGraphicsEvent(int type) { return type >= kFirstGraphicsEvent && type <= kLastGraphicsEvent; }

} // namespace PfGraphicsEvents
