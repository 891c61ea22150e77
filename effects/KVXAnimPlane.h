#pragma once

#include <osg/Vec3d>
#include <osg/Vec4d>

// A cutting plane of the effects: a point and a normal (not necessarily of
// unit length). What lies on the side the normal points to is kept.
struct KVXAnimPlane {
    osg::Vec3d point;
    osg::Vec3d normal{0.0, 0.0, 1.0};

    // (nx, ny, nz, d) with d = -(n . p): the clip-plane equation.
    osg::Vec4d equation() const { return osg::Vec4d(normal, -(normal * point)); }
    bool operator==(const KVXAnimPlane& other) const { return point == other.point && normal == other.normal; }
    bool operator!=(const KVXAnimPlane& other) const { return !(*this == other); }
};
