#pragma once

#include <osg/Vec3d>
#include <osg/Vec3f>

namespace vpe {

namespace detail {
template <class T>
struct Vec3Of;
template <>
struct Vec3Of<double> {
    using type = osg::Vec3d;
};
template <>
struct Vec3Of<float> {
    using type = osg::Vec3f;
};
} // namespace detail

template <class T>
using CVec3 = typename detail::Vec3Of<T>::type;

} // namespace vpe
