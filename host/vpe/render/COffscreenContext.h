#pragma once

#include <QString>

namespace vpe {

// The process's OpenGL context for rendering without a screen: desktop GL
// through EGL's surfaceless platform (Mesa), so no X server is needed. Made
// on first use and kept for the life of the process; everything renders into
// frame buffer objects.
class COffscreenContext {
public:
    // Makes the context current on this thread, creating it first when
    // needed. False with the reason when no such context can be had.
    static bool MakeCurrent(QString* error = nullptr);
    static bool IsAvailable();
    // A small frame buffer object that stands in for the window a surfaceless
    // context lacks: bound whenever the renderer goes back to "the window",
    // so that it never touches a framebuffer that does not exist.
    static unsigned int DefaultFramebuffer();
    static void BindDefaultFramebuffer();
};

} // namespace vpe
