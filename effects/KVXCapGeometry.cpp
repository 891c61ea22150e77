#include "KVXCapGeometry.h"

#include "host/model/KVXElementObject.h"
#include "host/model/PfOptionContainer.h"
#include "host/vpe/geometry/CPlane.h"
#include "host/vpe/geometry/CSection.h"
#include "host/vpe/geometry/GBodyBuilder.h"
#include "host/vpe/scene/CPrimitiveRenderable.h"
#include "host/vpe/scene/CStateSet.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>

namespace {

double sideOf(const osg::Vec3f& point, const KVXAnimPlane& bound)
{
    return (osg::Vec3d(point) - bound.point) * bound.normal;
}

osg::Vec3f crossing(const osg::Vec3f& a, double da, const osg::Vec3f& b, double db)
{
    return a + (b - a) * static_cast<float>(da / (da - db));
}

// The part of each triangle on the kept side of the bound, as a fan.
void clipTriangles(std::vector<osg::Vec3f>& vertices, std::vector<osg::Vec3f>& normals, const KVXAnimPlane& bound)
{
    std::vector<osg::Vec3f> keptVertices;
    std::vector<osg::Vec3f> keptNormals;
    std::vector<osg::Vec3f> polygon;
    for (std::size_t i = 0; i + 2 < vertices.size(); i += 3) {
        polygon.clear();
        for (std::size_t k = 0; k < 3; ++k) {
            const osg::Vec3f& a = vertices[i + k];
            const osg::Vec3f& b = vertices[i + (k + 1) % 3];
            const double da = sideOf(a, bound);
            const double db = sideOf(b, bound);
            if (da >= 0.0)
                polygon.push_back(a);
            if ((da >= 0.0) != (db >= 0.0))
                polygon.push_back(crossing(a, da, b, db));
        }
        for (std::size_t k = 1; k + 1 < polygon.size(); ++k) {
            keptVertices.insert(keptVertices.end(), {polygon[0], polygon[k], polygon[k + 1]});
            keptNormals.insert(keptNormals.end(), 3, normals[i]);
        }
    }
    vertices.swap(keptVertices);
    normals.swap(keptNormals);
}

void clipSegments(std::vector<osg::Vec3f>& vertices, const KVXAnimPlane& bound)
{
    std::vector<osg::Vec3f> kept;
    for (std::size_t i = 0; i + 1 < vertices.size(); i += 2) {
        osg::Vec3f a = vertices[i];
        osg::Vec3f b = vertices[i + 1];
        const double da = sideOf(a, bound);
        const double db = sideOf(b, bound);
        if (da < 0.0 && db < 0.0)
            continue;
        if (da < 0.0)
            a = crossing(a, da, b, db);
        else if (db < 0.0)
            b = crossing(a, da, b, db);
        kept.insert(kept.end(), {a, b});
    }
    vertices.swap(kept);
}

// How far from the line through its neighbours (relative to their distance)
// a point of a section loop may lie and still be dropped as a point on a
// straight run: the cut across a face divided into many triangles crosses
// each of them on one line.
constexpr double kStraightness = 1e-9;
// Points of a loop nearer than this (millimetres) are one point met twice:
// a section through a vertex can give a corner twice, a hair apart.
constexpr double kDouble = 1e-6;

// The loop with each point that doubles the one kept before it left out.
// Measured against the point kept, not its raw neighbour: judged against
// each other, both copies of a doubled corner looked like points on a
// straight run and the corner was lost.
vpe::CSection::Loop withoutDoubles(const vpe::CSection::Loop& loop)
{
    vpe::CSection::Loop kept;
    for (const osg::Vec3d& point : loop)
        if (kept.empty() || (point - kept.back()).length2() > kDouble * kDouble)
            kept.push_back(point);
    while (kept.size() > 1 && (kept.back() - kept.front()).length2() <= kDouble * kDouble)
        kept.pop_back();
    return kept;
}

// Whether the second loop runs through the first one's points backwards.
bool reversedAlike(const vpe::CSection::Loop& first, const vpe::CSection::Loop& second)
{
    const std::size_t n = first.size();
    if (n == 0 || second.size() != n)
        return false;
    const auto same = [](const osg::Vec3d& a, const osg::Vec3d& b) { return (a - b).length2() <= kDouble * kDouble; };
    for (std::size_t start = 0; start < n; ++start) {
        if (!same(first[0], second[start]))
            continue;
        std::size_t k = 1;
        while (k < n && same(first[k], second[(start + n - k) % n]))
            ++k;
        if (k == n)
            return true;
    }
    return false;
}

// The loop's corners: a point on the line from the last corner kept to the
// next point, and between them, is left out.
vpe::CSection::Loop cornersOf(const vpe::CSection::Loop& loop)
{
    const std::size_t n = loop.size();
    if (n <= 3)
        return loop;
    vpe::CSection::Loop kept;
    for (std::size_t i = 0; i < n; ++i) {
        const osg::Vec3d& before = kept.empty() ? loop[n - 1] : kept.back();
        const osg::Vec3d& here = loop[i];
        const osg::Vec3d& after = loop[(i + 1) % n];
        const osg::Vec3d across = after - before;
        // Off the line from its neighbours, or doubling back: a corner.
        const double off = ((here - before) ^ across).length();
        const bool between = (here - before) * across > 0.0 && (after - here) * across > 0.0;
        if (!between || off > kStraightness * across.length2())
            kept.push_back(here);
    }
    return kept;
}

struct Vec3fHash {
    std::size_t operator()(const osg::Vec3f& v) const
    {
        std::uint32_t bits[3];
        std::memcpy(bits, v.ptr(), sizeof(bits));
        return (static_cast<std::size_t>(bits[0]) * 73856093u) ^ (static_cast<std::size_t>(bits[1]) * 19349663u) ^
               (static_cast<std::size_t>(bits[2]) * 83492791u);
    }
};

} // namespace

KVXCapGeometry::KVXCapGeometry() = default;

KVXCapGeometry::~KVXCapGeometry() = default;

void KVXCapGeometry::Clear()
{
    m_faces = nullptr;
    m_edges = nullptr;
    m_movable = false;
    m_usedPoints.clear();
}

vpe::CSection KVXCapGeometry::Straightened(const vpe::CSection& section)
{
    std::vector<vpe::CSection::Loop> loops;
    for (const vpe::CSection::Loop& loop : section.GetLoops()) {
        vpe::CSection::Loop corners = cornersOf(withoutDoubles(loop));
        loops.push_back(corners.size() >= 3 ? std::move(corners) : loop);
    }
    // Two loops on the same points wound opposite ways (a frame's opening
    // and the outline of the sash set in it) enclose nothing between them;
    // covered both, they drew triangles over the opening, some turned away.
    std::vector<bool> cancelled(loops.size(), false);
    for (std::size_t i = 0; i < loops.size(); ++i)
        for (std::size_t j = i + 1; j < loops.size() && !cancelled[i]; ++j)
            if (!cancelled[j] && reversedAlike(loops[i], loops[j]))
                cancelled[i] = cancelled[j] = true;
    vpe::CSection straight;
    for (std::size_t i = 0; i < loops.size(); ++i)
        if (!cancelled[i])
            straight.AddLoop(std::move(loops[i]));
    return straight;
}

std::vector<osg::Vec3f> KVXCapGeometry::pointsOf(const vpe::CSection& section)
{
    std::vector<osg::Vec3f> points;
    for (const vpe::CSection::Loop& loop : section.GetLoops()) {
        for (const osg::Vec3d& point : loop)
            points.emplace_back(point);
    }
    return points;
}

bool KVXCapGeometry::traceBack(const std::vector<osg::Vec3f>& vertices, const std::vector<osg::Vec3f>& points,
                               std::vector<std::uint32_t>& sources)
{
    std::unordered_map<osg::Vec3f, std::uint32_t, Vec3fHash> where;
    where.reserve(points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
        where.emplace(points[i], static_cast<std::uint32_t>(i));
    sources.clear();
    sources.reserve(vertices.size());
    for (const osg::Vec3f& vertex : vertices) {
        auto it = where.find(vertex);
        if (it == where.end())
            return false;
        sources.push_back(it->second);
    }
    return true;
}

void KVXCapGeometry::Make(const KVXElementObject& element, const vpe::CSection& section, const vpe::CPlane& plane,
                          const std::vector<KVXAnimPlane>& bounds, bool movable, vpe::CStateSet* faceState,
                          vpe::CStateSet* edgeState)
{
    Clear();
    const vpe::CRefPtr<vpe::CBody> shell = vpe::GBodyBuilder::CreateShell(Straightened(section), plane, true, false);
    if (!shell)
        return;
    std::vector<osg::Vec3f> vertices;
    std::vector<osg::Vec3f> normals;
    std::vector<osg::Vec3f> edges;
    const PfOptionContainer* options = PfOptionContainer::GetInstance();
    element.tessellateShell(*shell, options->GetDistEpsilonCoefficient(), options->GetAngleEpsilonCoefficient(),
                            vertices, normals, edges);
    for (const KVXAnimPlane& bound : bounds) {
        clipTriangles(vertices, normals, bound);
        clipSegments(edges, bound);
    }
    if (vertices.empty())
        return;
    // Dynamic: a sliding cut moves these arrays frame after frame.
    m_faces = new vpe::CPrimitiveRenderable(true);
    m_faces->SetPrimitives(vpe::CPrimitiveRenderable::Triangles, vertices, normals);
    m_faces->setStateSet(faceState);
    if (!edges.empty()) {
        m_edges = new vpe::CPrimitiveRenderable(true);
        m_edges->SetPrimitives(vpe::CPrimitiveRenderable::Lines, edges);
        m_edges->setStateSet(edgeState);
    }
    // A clipped cap has points of its own: it is made again each time.
    const std::vector<osg::Vec3f> points = pointsOf(section);
    m_movable = movable && bounds.empty() && traceBack(vertices, points, m_faceSources) &&
                traceBack(edges, points, m_edgeSources);
    if (m_movable)
        keepUsedPoints();
}

void KVXCapGeometry::keepUsedPoints()
{
    // The sources become places in the list of used points.
    std::vector<std::uint32_t> used(m_faceSources);
    used.insert(used.end(), m_edgeSources.begin(), m_edgeSources.end());
    std::sort(used.begin(), used.end());
    used.erase(std::unique(used.begin(), used.end()), used.end());
    const auto placeOf = [&used](std::uint32_t source) {
        return static_cast<std::uint32_t>(std::lower_bound(used.begin(), used.end(), source) - used.begin());
    };
    for (std::uint32_t& source : m_faceSources)
        source = placeOf(source);
    for (std::uint32_t& source : m_edgeSources)
        source = placeOf(source);
    m_usedPoints = std::move(used);
}

bool KVXCapGeometry::Move(const std::vector<osg::Vec3f>& points)
{
    if (!m_movable || !m_faces || points.size() != m_usedPoints.size())
        return false;
    moveArray(m_faces.get(), m_faceSources, points);
    if (m_edges)
        moveArray(m_edges.get(), m_edgeSources, points);
    return true;
}

void KVXCapGeometry::moveArray(vpe::CPrimitiveRenderable* renderable, const std::vector<std::uint32_t>& sources,
                               const std::vector<osg::Vec3f>& points)
{
    auto* vertices = static_cast<osg::Vec3Array*>(renderable->getVertexArray());
    for (std::size_t i = 0; i < sources.size() && i < vertices->size(); ++i)
        (*vertices)[i] = points[sources[i]];
    vertices->dirty();
    renderable->dirtyBound();
}
