#pragma once

#include "CVisualNode.h"

namespace vpe {

// An overlay over a visual node: the same renderables (shared, not copied)
// drawn a second time under the overlay's own state set, which overrides
// theirs. Removing the overlay leaves the original as it was.
class CRefVisualNode : public CVisualNode {
public:
    // copyRenderables: draw copies of the renderables (sharing their
    // arrays) instead of the renderables themselves; copyStateSets: give
    // those copies private copies of their state sets. Both false shares all.
    CRefVisualNode(CVisualNode* original, bool copyRenderables, bool copyStateSets);

    CVisualNode* GetOriginal() const { return m_original.get(); }
    // Takes the original's current renderables.
    void Refresh();

protected:
    ~CRefVisualNode() override = default;

private:
    osg::ref_ptr<CVisualNode> m_original;
    bool m_copyRenderables;
    bool m_copyStateSets;
};

} // namespace vpe
