#pragma once

#include "CGroupNode.h"

namespace vpe {

// An overlay over a group: the group's children (shared) drawn a second time
// under the overlay's own state set, at the group's placement.
class CRefGroupNode : public CGroupNode {
public:
    // The flags are those of CRefVisualNode; the children are always shared
    // (the flags apply to overlays made over visual nodes).
    CRefGroupNode(CGroupNode* original, bool copyRenderables, bool copyStateSets);

    CGroupNode* GetOriginal() const { return m_original.get(); }
    // Takes the original's current children and matrix.
    void Refresh();

protected:
    ~CRefGroupNode() override = default;

private:
    osg::ref_ptr<CGroupNode> m_original;
};

} // namespace vpe
