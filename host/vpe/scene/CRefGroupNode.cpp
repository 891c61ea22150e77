#include "CRefGroupNode.h"

namespace vpe {

CRefGroupNode::CRefGroupNode(CGroupNode* original, bool, bool) : m_original(original) { Refresh(); }

void CRefGroupNode::Refresh()
{
    removeChildren(0, getNumChildren());
    if (!m_original)
        return;
    setMatrix(m_original->getMatrix());
    for (unsigned int i = 0; i < m_original->getNumChildren(); ++i)
        addChild(m_original->getChild(i));
}

} // namespace vpe
