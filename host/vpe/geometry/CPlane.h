#pragma once

#include <osg/Vec2d>
#include <osg/Vec3d>
#include <osg/Vec4d>

namespace vpe {

// An oriented plane through a point, with a unit normal. A zero or
// non-finite normal makes an invalid plane, which cuts nothing and measures
// every distance as zero.
//
// The plane also carries a right-handed frame (u, v, normal): counter-clockwise
// in its 2D coordinates is counter-clockwise about the normal, which is how
// sections tell outer boundaries from holes.
class CPlane {
public:
    CPlane() = default;
    CPlane(const osg::Vec3d& point, const osg::Vec3d& normal);

    bool IsValid() const { return m_valid; }
    const osg::Vec3d& GetPoint() const { return m_point; }
    const osg::Vec3d& GetNormal() const { return m_normal; }

    // Positive on the side the normal points to.
    double GetDistance(const osg::Vec3d& point) const;
    // (a, b, c, d) such that a·x + b·y + c·z + d is the signed distance.
    osg::Vec4d GetEquation() const;

    // Coordinates in the plane's frame of the point's projection, and back.
    osg::Vec2d ToPlane(const osg::Vec3d& point) const;
    osg::Vec3d FromPlane(const osg::Vec2d& point) const;

private:
    osg::Vec3d m_point;
    osg::Vec3d m_normal;
    osg::Vec3d m_u;
    osg::Vec3d m_v;
    bool m_valid = false;
};

} // namespace vpe
