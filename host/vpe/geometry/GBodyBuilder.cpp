#include "GBodyBuilder.h"

#include "CPlane.h"
#include "CRingTriangulator.h"
#include "CSection.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace vpe {

namespace {

using Ring = CRingTriangulator::Ring;

// Corners whose turn is below this (as a sine) are taken as straight.
constexpr double kStraight = 1e-10;

double signedArea(const std::vector<osg::Vec2d>& points, const Ring& ring)
{
    double area = 0.0;
    for (std::size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++)
        area += points[ring[j]].x() * points[ring[i]].y() - points[ring[i]].x() * points[ring[j]].y();
    return area * 0.5;
}

double signedArea(const std::vector<osg::Vec2d>& loop)
{
    Ring ring(loop.size());
    for (std::size_t i = 0; i < ring.size(); ++i)
        ring[i] = static_cast<std::uint32_t>(i);
    return ring.empty() ? 0.0 : signedArea(loop, ring);
}

bool ringContains(const std::vector<osg::Vec2d>& points, const Ring& ring, const osg::Vec2d& p)
{
    bool inside = false;
    for (std::size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
        const osg::Vec2d& a = points[ring[j]];
        const osg::Vec2d& b = points[ring[i]];
        if ((a.y() > p.y()) != (b.y() > p.y()) && p.x() < a.x() + (p.y() - a.y()) * (b.x() - a.x()) / (b.y() - a.y()))
            inside = !inside;
    }
    return inside;
}


// The outer loop that holds the hole: the smallest that contains one of its
// points. A hole point may lie on an outer loop where the two touch, so
// further points are tried. -1 for a hole outside every outer loop.
int owningOuter(const std::vector<osg::Vec2d>& points, const std::vector<Ring>& rings,
                const std::vector<double>& areas, const std::vector<std::size_t>& outers, const Ring& hole)
{
    for (std::uint32_t index : hole) {
        int owner = -1;
        for (std::size_t k = 0; k < outers.size(); ++k) {
            const std::size_t outer = outers[k];
            if ((owner < 0 || areas[outer] < areas[outers[owner]]) && ringContains(points, rings[outer], points[index]))
                owner = static_cast<int>(k);
        }
        if (owner >= 0)
            return owner;
    }
    return -1;
}

} // namespace

std::vector<CBody::Triangle> GBodyBuilder::TriangulateLoops(const std::vector<std::vector<osg::Vec2d>>& loops)
{
    std::vector<osg::Vec2d> points;
    std::vector<Ring> rings;
    std::vector<double> areas;
    std::vector<std::size_t> outers, holes;
    for (const std::vector<osg::Vec2d>& loop : loops) {
        Ring ring(loop.size());
        for (std::size_t i = 0; i < ring.size(); ++i)
            ring[i] = static_cast<std::uint32_t>(points.size() + i);
        points.insert(points.end(), loop.begin(), loop.end());
        if (ring.size() < 3)
            continue;
        const double area = signedArea(points, ring);
        (area >= 0.0 ? outers : holes).push_back(rings.size());
        rings.push_back(std::move(ring));
        areas.push_back(std::abs(area));
    }

    std::vector<std::vector<const Ring*>> holesOf(outers.size());
    std::vector<CBody::Triangle> triangles;
    for (std::size_t hole : holes) {
        const int owner = owningOuter(points, rings, areas, outers, rings[hole]);
        if (owner >= 0) {
            holesOf[owner].push_back(&rings[hole]);
        } else {
            // A stray hole is still covered, so that a mesh closed along it
            // stays closed.
            CRingTriangulator(points, rings[hole], -1.0).Triangulate(triangles);
        }
    }
    for (std::size_t k = 0; k < outers.size(); ++k) {
        CRingTriangulator triangulator(points, rings[outers[k]], 1.0);
        triangulator.AddHoles(holesOf[k]);
        triangulator.Triangulate(triangles);
    }
    return triangles;
}

CBody* GBodyBuilder::CreateShell(const CSection& section, const CPlane& plane, bool alongNormal, bool twoSided)
{
    if (section.IsEmpty() || !plane.IsValid())
        return nullptr;
    std::vector<std::vector<osg::Vec2d>> loops;
    double area = 0.0;
    for (const CSection::Loop& loop : section.GetLoops()) {
        std::vector<osg::Vec2d>& flat = loops.emplace_back();
        for (const osg::Vec3d& p : loop)
            flat.push_back(plane.ToPlane(p));
        area += signedArea(flat);
    }
    // A section wound about the opposite normal is covered all the same and
    // then faces as asked.
    const bool reversed = area < 0.0;
    std::vector<osg::Vec3d> vertices;
    for (std::size_t k = 0; k < loops.size(); ++k) {
        const CSection::Loop& loop = section.GetLoops()[k];
        if (reversed) {
            std::reverse(loops[k].begin(), loops[k].end());
            vertices.insert(vertices.end(), loop.rbegin(), loop.rend());
        } else {
            vertices.insert(vertices.end(), loop.begin(), loop.end());
        }
    }
    std::vector<CBody::Triangle> triangles;
    for (const CBody::Triangle& t : TriangulateLoops(loops)) {
        const osg::Vec3d& a = vertices[t[0]];
        const osg::Vec3d& b = vertices[t[1]];
        const osg::Vec3d& c = vertices[t[2]];
        const double longest = std::max({(b - a).length2(), (c - b).length2(), (a - c).length2()});
        if (((b - a) ^ (c - a)).length() > kStraight * longest)
            triangles.push_back(alongNormal ? t : CBody::Triangle{t[2], t[1], t[0]});
    }
    if (twoSided) {
        const std::size_t count = triangles.size();
        for (std::size_t i = 0; i < count; ++i)
            triangles.push_back({triangles[i][2], triangles[i][1], triangles[i][0]});
    }
    return new CBody(std::move(vertices), std::move(triangles));
}

CBody* GBodyBuilder::CreateExtrusion(const std::vector<osg::Vec2d>& outline,
                                     const std::vector<std::vector<osg::Vec2d>>& holes, double bottom, double top)
{
    if (outline.size() < 3 || signedArea(outline) == 0.0 || !(top > bottom))
        return nullptr;
    // Outline counter-clockwise and holes clockwise: each loop then has the
    // material on its left, and one rule gives every side its outward face.
    std::vector<std::vector<osg::Vec2d>> loops{outline};
    for (const std::vector<osg::Vec2d>& hole : holes) {
        if (hole.size() >= 3)
            loops.push_back(hole);
    }
    for (std::size_t k = 0; k < loops.size(); ++k) {
        if ((signedArea(loops[k]) < 0.0) == (k == 0))
            std::reverse(loops[k].begin(), loops[k].end());
    }
    std::vector<osg::Vec3d> vertices;
    for (const std::vector<osg::Vec2d>& loop : loops) {
        for (const osg::Vec2d& p : loop)
            vertices.emplace_back(p.x(), p.y(), bottom);
    }
    const auto n = static_cast<std::uint32_t>(vertices.size());
    for (std::uint32_t i = 0; i < n; ++i)
        vertices.emplace_back(vertices[i].x(), vertices[i].y(), top);
    std::vector<CBody::Triangle> triangles;
    for (const CBody::Triangle& t : TriangulateLoops(loops)) {
        triangles.push_back({t[0] + n, t[1] + n, t[2] + n});
        triangles.push_back({t[2], t[1], t[0]});
    }
    std::uint32_t first = 0;
    for (const std::vector<osg::Vec2d>& loop : loops) {
        const auto size = static_cast<std::uint32_t>(loop.size());
        for (std::uint32_t k = 0; k < size; ++k) {
            const std::uint32_t i = first + k, j = first + (k + 1) % size;
            triangles.push_back({i, j, j + n});
            triangles.push_back({i, j + n, i + n});
        }
        first += size;
    }
    return new CBody(std::move(vertices), std::move(triangles));
}

} // namespace vpe
