#pragma once

#include <osg/Matrixd>
#include <osg/Matrixf>

namespace vpe {

namespace detail {
template <class T>
struct Matrix4Of;
template <>
struct Matrix4Of<double> {
    using type = osg::Matrixd;
};
template <>
struct Matrix4Of<float> {
    using type = osg::Matrixf;
};
} // namespace detail

// Row-vector convention as in OpenSceneGraph: a point p maps to p * M, the
// translation sits in elements 12, 13 and 14 of ptr().
template <class T>
using CMatrix4 = typename detail::Matrix4Of<T>::type;

} // namespace vpe
