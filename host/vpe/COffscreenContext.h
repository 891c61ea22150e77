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
};

} // namespace vpe
