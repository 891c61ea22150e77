#pragma once

#include "PfDbHandle.h"
#include "host/vpe/scene/CSceneNode.h"

namespace vpe {
class CViewer;
}

// A view of a document: the viewer that shows it and the scene node each
// drawn element has there. The element model provides the implementation.
class PfGsView {
public:
    virtual ~PfGsView() = default;

    virtual vpe::CViewer* GetViewer() const = 0;
    // Null for an object that draws nothing in this view.
    virtual vpe::CSceneNode* GetSceneNode(PfDbHandle handle) const = 0;
    // Draws every element again.
    virtual void Regenerate() = 0;
};
