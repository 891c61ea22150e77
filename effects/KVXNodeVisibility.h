#pragma once

#include <osg/Node>

// Shows or hides a node of the effects as a whole (with everything below).
namespace KVXNodeVisibility {

inline void SetVisible(osg::Node* node, bool visible)
{
    if (node)
        node->setNodeMask(visible ? ~0u : 0u);
}

} // namespace KVXNodeVisibility
