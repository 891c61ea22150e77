#include "CPlane.h"

#include <cmath>

namespace vpe {

CPlane::CPlane(const osg::Vec3d& point, const osg::Vec3d& normal) : m_point(point)
{
    const double length = normal.length();
    if (!(length > 0.0) || !std::isfinite(length) || !point.valid())
        return;
    m_normal = normal / length;
    // Start u from the axis least aligned with the normal, so that it never
    // comes out of a near-zero cross product.
    const osg::Vec3d axis = std::abs(m_normal.x()) < 0.6 ? osg::Vec3d(1.0, 0.0, 0.0) : osg::Vec3d(0.0, 1.0, 0.0);
    m_u = axis ^ m_normal;
    m_u.normalize();
    m_v = m_normal ^ m_u;
    m_valid = true;
}

double CPlane::GetDistance(const osg::Vec3d& point) const
{
    return m_valid ? (point - m_point) * m_normal : 0.0;
}

osg::Vec4d CPlane::GetEquation() const
{
    return osg::Vec4d(m_normal, -(m_normal * m_point));
}

osg::Vec2d CPlane::ToPlane(const osg::Vec3d& point) const
{
    const osg::Vec3d offset = point - m_point;
    return osg::Vec2d(offset * m_u, offset * m_v);
}

osg::Vec3d CPlane::FromPlane(const osg::Vec2d& point) const
{
    return m_point + m_u * point.x() + m_v * point.y();
}

} // namespace vpe
