#include "CBody.h"

#include <osg/Matrixd>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace vpe {

namespace {

double signedArea(const std::vector<osg::Vec2d>& outline)
{
    double area = 0.0;
    for (std::size_t i = 0, j = outline.size() - 1; i < outline.size(); j = i++)
        area += outline[j].x() * outline[i].y() - outline[i].x() * outline[j].y();
    return area * 0.5;
}

double cross(const osg::Vec2d& a, const osg::Vec2d& b, const osg::Vec2d& c)
{
    return (b.x() - a.x()) * (c.y() - a.y()) - (b.y() - a.y()) * (c.x() - a.x());
}

bool inside(const osg::Vec2d& p, const osg::Vec2d& a, const osg::Vec2d& b, const osg::Vec2d& c)
{
    return cross(a, b, p) >= 0.0 && cross(b, c, p) >= 0.0 && cross(c, a, p) >= 0.0;
}

} // namespace

CBody::CBody(std::vector<osg::Vec3d> vertices, std::vector<Triangle> triangles)
    : m_vertices(std::move(vertices)), m_triangles(std::move(triangles))
{
}

CBody* CBody::CreateBox(const osg::Vec3d& min, const osg::Vec3d& max)
{
    return CreateExtrusion({{min.x(), min.y()}, {max.x(), min.y()}, {max.x(), max.y()}, {min.x(), max.y()}}, min.z(),
                           max.z());
}

std::vector<CBody::Triangle> CBody::TriangulatePolygon(const std::vector<osg::Vec2d>& outline)
{
    std::vector<Triangle> triangles;
    const std::size_t n = outline.size();
    if (n < 3)
        return triangles;
    std::vector<std::uint32_t> ring(n);
    for (std::size_t i = 0; i < n; ++i)
        ring[i] = static_cast<std::uint32_t>(i);
    if (signedArea(outline) < 0.0)
        std::reverse(ring.begin(), ring.end());
    // Clip ears until a triangle is left; a pass without an ear means the
    // outline is not simple, and the rest is fanned rather than lost.
    std::size_t guard = 0;
    for (std::size_t i = 0; ring.size() > 3 && guard < 2 * n * n; ++guard) {
        const std::size_t count = ring.size();
        const std::uint32_t a = ring[(i + count - 1) % count], b = ring[i % count], c = ring[(i + 1) % count];
        bool ear = cross(outline[a], outline[b], outline[c]) > 0.0;
        for (std::size_t k = 0; ear && k < count; ++k) {
            const std::uint32_t p = ring[k];
            if (p != a && p != b && p != c && inside(outline[p], outline[a], outline[b], outline[c]))
                ear = false;
        }
        if (ear) {
            triangles.push_back({a, b, c});
            ring.erase(ring.begin() + static_cast<std::ptrdiff_t>(i % count));
        } else {
            ++i;
        }
    }
    for (std::size_t k = 1; k + 1 < ring.size(); ++k)
        triangles.push_back({ring[0], ring[k], ring[k + 1]});
    return triangles;
}

CBody* CBody::CreateExtrusion(const std::vector<osg::Vec2d>& outline, double bottom, double top)
{
    if (outline.size() < 3 || std::abs(signedArea(outline)) <= 0.0 || top <= bottom)
        return nullptr;
    std::vector<osg::Vec2d> ring = outline;
    if (signedArea(ring) < 0.0)
        std::reverse(ring.begin(), ring.end());
    const auto n = static_cast<std::uint32_t>(ring.size());
    std::vector<osg::Vec3d> vertices;
    for (const osg::Vec2d& p : ring)
        vertices.emplace_back(p.x(), p.y(), bottom);
    for (const osg::Vec2d& p : ring)
        vertices.emplace_back(p.x(), p.y(), top);
    std::vector<Triangle> triangles;
    for (const Triangle& t : TriangulatePolygon(ring)) {
        triangles.push_back({t[0] + n, t[1] + n, t[2] + n});
        triangles.push_back({t[2], t[1], t[0]});
    }
    for (std::uint32_t i = 0; i < n; ++i) {
        const std::uint32_t j = (i + 1) % n;
        triangles.push_back({i, j, j + n});
        triangles.push_back({i, j + n, i + n});
    }
    return new CBody(std::move(vertices), std::move(triangles));
}

osg::BoundingBoxd CBody::GetBoundingBox() const
{
    osg::BoundingBoxd box;
    for (const osg::Vec3d& v : m_vertices)
        box.expandBy(v);
    return box;
}

double CBody::GetVolume() const
{
    double volume = 0.0;
    for (const Triangle& t : m_triangles)
        volume += m_vertices[t[0]] * (m_vertices[t[1]] ^ m_vertices[t[2]]);
    return volume / 6.0;
}

bool CBody::IsClosed() const
{
    std::map<std::pair<std::uint32_t, std::uint32_t>, int> edges;
    for (const Triangle& t : m_triangles) {
        for (int k = 0; k < 3; ++k)
            ++edges[{t[k], t[(k + 1) % 3]}];
    }
    for (const auto& edge : edges) {
        if (edge.second != 1)
            return false;
        auto reverse = edges.find({edge.first.second, edge.first.first});
        if (reverse == edges.end() || reverse->second != 1)
            return false;
    }
    return !m_triangles.empty();
}

CBody* CBody::Transformed(const osg::Matrixd& matrix) const
{
    std::vector<osg::Vec3d> moved;
    moved.reserve(m_vertices.size());
    for (const osg::Vec3d& v : m_vertices)
        moved.push_back(v * matrix);
    return new CBody(std::move(moved), m_triangles);
}

} // namespace vpe
