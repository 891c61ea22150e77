#pragma once

#include "host/vpe/scene/CNodeVisitor.h"

// Gives every renderable below a node a private copy of its state set (and
// makes that copy a pass of its effect's first technique), so that clip
// planes set on the node reach no other node.
class KVXCloneStateSetVisitor : public vpe::CNodeVisitor {
protected:
    void VisitVisualNode(vpe::CVisualNode& node) override;
};
