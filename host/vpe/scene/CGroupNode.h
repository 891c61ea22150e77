#pragma once

#include <osg/MatrixTransform>

namespace vpe {

// A group of nodes placed by a matrix (identity by default).
using CGroupNode = osg::MatrixTransform;

} // namespace vpe
