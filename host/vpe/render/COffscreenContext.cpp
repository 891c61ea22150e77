#include "COffscreenContext.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <GL/glext.h>

namespace vpe {

namespace {

struct Context {
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
    GLuint framebuffer = 0;
    QString error;
};

template <class Function>
Function glFunction(const char* name)
{
    return reinterpret_cast<Function>(eglGetProcAddress(name));
}

GLuint makeStandInFramebuffer()
{
    auto genFramebuffers = glFunction<PFNGLGENFRAMEBUFFERSPROC>("glGenFramebuffers");
    auto bindFramebuffer = glFunction<PFNGLBINDFRAMEBUFFERPROC>("glBindFramebuffer");
    auto genRenderbuffers = glFunction<PFNGLGENRENDERBUFFERSPROC>("glGenRenderbuffers");
    auto bindRenderbuffer = glFunction<PFNGLBINDRENDERBUFFERPROC>("glBindRenderbuffer");
    auto storage = glFunction<PFNGLRENDERBUFFERSTORAGEPROC>("glRenderbufferStorage");
    auto attach = glFunction<PFNGLFRAMEBUFFERRENDERBUFFERPROC>("glFramebufferRenderbuffer");
    if (!genFramebuffers || !bindFramebuffer || !genRenderbuffers || !bindRenderbuffer || !storage || !attach)
        return 0;
    GLuint framebuffer = 0, buffers[2] = {0, 0};
    genFramebuffers(1, &framebuffer);
    bindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    genRenderbuffers(2, buffers);
    bindRenderbuffer(GL_RENDERBUFFER, buffers[0]);
    storage(GL_RENDERBUFFER, GL_RGBA8, 1, 1);
    attach(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, buffers[0]);
    bindRenderbuffer(GL_RENDERBUFFER, buffers[1]);
    storage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, 1, 1);
    attach(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, buffers[1]);
    return framebuffer;
}

Context create()
{
    Context c;
    auto getPlatformDisplay =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
    if (!getPlatformDisplay) {
        c.error = QStringLiteral("EGL has no platform displays (eglGetPlatformDisplayEXT)");
        return c;
    }
    c.display = getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    EGLint major = 0, minor = 0;
    if (c.display == EGL_NO_DISPLAY || !eglInitialize(c.display, &major, &minor)) {
        c.error = QStringLiteral("cannot open an EGL surfaceless display");
        return c;
    }
    if (!eglBindAPI(EGL_OPENGL_API)) {
        c.error = QStringLiteral("EGL offers no desktop OpenGL");
        return c;
    }
    const EGLint configAttributes[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_RED_SIZE, 8, EGL_GREEN_SIZE, 8,
                                       EGL_BLUE_SIZE, 8, EGL_DEPTH_SIZE, 24, EGL_STENCIL_SIZE, 8, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    eglChooseConfig(c.display, configAttributes, &config, 1, &count);
    const EGLint contextAttributes[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION, 0,
                                        EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                        EGL_CONTEXT_OPENGL_COMPATIBILITY_PROFILE_BIT, EGL_NONE};
    c.context = eglCreateContext(c.display, count ? config : EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, contextAttributes);
    if (c.context == EGL_NO_CONTEXT)
        c.error = QStringLiteral("cannot create an OpenGL context (EGL error 0x%1)").arg(eglGetError(), 0, 16);
    return c;
}

Context& instance()
{
    static Context context = create();
    return context;
}

} // namespace

bool COffscreenContext::MakeCurrent(QString* error)
{
    Context& c = instance();
    if (c.context == EGL_NO_CONTEXT) {
        if (error)
            *error = c.error;
        return false;
    }
    if (eglGetCurrentContext() == c.context)
        return true;
    if (!eglMakeCurrent(c.display, EGL_NO_SURFACE, EGL_NO_SURFACE, c.context)) {
        if (error)
            *error = QStringLiteral("cannot make the OpenGL context current (EGL error 0x%1)").arg(eglGetError(), 0, 16);
        return false;
    }
    if (!c.framebuffer)
        c.framebuffer = makeStandInFramebuffer();
    return true;
}

bool COffscreenContext::IsAvailable() { return instance().context != EGL_NO_CONTEXT; }

unsigned int COffscreenContext::DefaultFramebuffer() { return instance().framebuffer; }

void COffscreenContext::BindDefaultFramebuffer()
{
    static auto bind = glFunction<PFNGLBINDFRAMEBUFFERPROC>("glBindFramebuffer");
    if (bind && instance().framebuffer)
        bind(GL_FRAMEBUFFER, instance().framebuffer);
}

} // namespace vpe
