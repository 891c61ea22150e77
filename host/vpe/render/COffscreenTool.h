#pragma once

#include "host/vpe/core/CReferenced.h"

namespace vpe {

class CViewer;

// Makes a viewer draw its frames at a chosen size (a video's) instead of its
// view's, between Begin and End; End gives the view its size back.
class COffscreenTool : public CReferenced {
public:
    explicit COffscreenTool(CViewer* viewer) : m_viewer(viewer) {}

    void SetSize(int width, int height);
    int GetWidth() const { return m_width; }
    int GetHeight() const { return m_height; }
    void Begin();
    void End();
    bool IsActive() const { return m_active; }

protected:
    ~COffscreenTool() override;

private:
    CViewer* m_viewer;
    int m_width = 1280;
    int m_height = 720;
    int m_savedWidth = 0;
    int m_savedHeight = 0;
    bool m_active = false;
};

} // namespace vpe
