#pragma once

namespace osg {
class Node;
}

namespace vpe {

// Declared apart from the node classes so that headers which only pass nodes
// around need not parse the scene graph headers.
using CSceneNode = osg::Node;

class CAnimation;
class CAnimator;

} // namespace vpe
