#pragma once

#include "KVXAnimPlane.h"

#include "host/vpe/scene/CNodeVisitor.h"

namespace vpe {
class CStateSet;
}

// Sets or removes one clip plane (by index) on every renderable below a node,
// and on the passes of their effects. A renderable whose state set is shared
// with others gets a private copy before a plane is set, so that elements
// drawn alike are never cut together.
class KVXAnimPlaneVisitor : public vpe::CNodeVisitor {
public:
    // With remove set the plane is ignored; with neither a plane nor remove
    // the visitor changes nothing.
    KVXAnimPlaneVisitor(const KVXAnimPlane* plane, bool remove, int index);

protected:
    void VisitVisualNode(vpe::CVisualNode& node) override;

private:
    void apply(vpe::CStateSet& stateSet, const osg::Vec4d& equation) const;

    const KVXAnimPlane* m_plane;
    bool m_remove;
    int m_index;
};
