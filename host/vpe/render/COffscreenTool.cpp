#include "COffscreenTool.h"

#include "CViewer.h"

namespace vpe {

COffscreenTool::~COffscreenTool() = default;

void COffscreenTool::SetSize(int width, int height)
{
    m_width = width;
    m_height = height;
    if (m_active && m_viewer)
        m_viewer->SetActiveViewportSize(width, height);
}

void COffscreenTool::Begin()
{
    if (m_active || !m_viewer)
        return;
    m_savedWidth = m_viewer->GetActiveViewportWidth();
    m_savedHeight = m_viewer->GetActiveViewportHeight();
    m_viewer->SetActiveViewportSize(m_width, m_height);
    m_active = true;
}

void COffscreenTool::End()
{
    if (!m_active)
        return;
    if (m_viewer)
        m_viewer->SetActiveViewportSize(m_savedWidth, m_savedHeight);
    m_active = false;
}

} // namespace vpe
