#pragma once

#include "CVisualNode.h"

#include <osg/NodeVisitor>

namespace vpe {

// Visits every node below the one it is applied to, all children whatever
// their masks; subclasses handle the visual nodes.
class CNodeVisitor : public osg::NodeVisitor {
public:
    CNodeVisitor() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) { setNodeMaskOverride(0xffffffffu); }

    void apply(osg::Geode& node) override
    {
        VisitVisualNode(node);
        traverse(node);
    }

protected:
    virtual void VisitVisualNode(CVisualNode& node) {}
};

} // namespace vpe
