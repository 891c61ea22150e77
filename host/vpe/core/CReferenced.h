#pragma once

#include <osg/Referenced>
#include <osg/ref_ptr>

namespace vpe {

using CReferenced = osg::Referenced;

template <class T>
using CRefPtr = osg::ref_ptr<T>;

} // namespace vpe
