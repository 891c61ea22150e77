#include "CRefVisualNode.h"

namespace vpe {

CRefVisualNode::CRefVisualNode(CVisualNode* original, bool copyRenderables, bool copyStateSets)
    : m_original(original), m_copyRenderables(copyRenderables), m_copyStateSets(copyStateSets)
{
    Refresh();
}

void CRefVisualNode::Refresh()
{
    removeDrawables(0, getNumDrawables());
    if (!m_original)
        return;
    const osg::CopyOp copy = m_copyStateSets ? osg::CopyOp::DEEP_COPY_STATESETS : osg::CopyOp::SHALLOW_COPY;
    for (unsigned int i = 0; i < m_original->getNumDrawables(); ++i) {
        CRenderable* renderable = m_original->getDrawable(i);
        addDrawable(m_copyRenderables ? static_cast<CRenderable*>(renderable->clone(copy)) : renderable);
    }
    // Placed where the original is: the overlay hangs elsewhere in the scene.
    setNodeMask(m_original->getNodeMask());
}

} // namespace vpe
