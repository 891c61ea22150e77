#pragma once

#include <osg/Geode>

namespace vpe {

// A leaf node holding renderables (drawables), each with its own state set.
using CVisualNode = osg::Geode;
using CRenderable = osg::Drawable;

} // namespace vpe
