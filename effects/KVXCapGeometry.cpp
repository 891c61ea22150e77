#include "KVXCapGeometry.h"

#include "host/model/KVXElementObject.h"
#include "host/model/PfOptionContainer.h"
#include "host/vpe/geometry/CPlane.h"
#include "host/vpe/geometry/CSection.h"
#include "host/vpe/geometry/GBodyBuilder.h"
#include "host/vpe/scene/CPrimitiveRenderable.h"
#include "host/vpe/scene/CStateSet.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
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

// A cap of more corners than this is made again rather than followed: the
// corners are matched pair by pair.
constexpr std::size_t kMostFollowedCorners = 64;
// How near the area a followed cap must cover the new outline's, relatively.
constexpr double kAreaAgreement = 1e-6;

// The section's area about the normal (holes count against).
double signedArea(const vpe::CSection& section, const osg::Vec3d& normal)
{
    osg::Vec3d sum;
    for (const vpe::CSection::Loop& loop : section.GetLoops())
        for (std::size_t i = 0; i < loop.size(); ++i)
            sum += loop[i] ^ loop[(i + 1) % loop.size()];
    return 0.5 * (sum * normal);
}

double signedArea(const osg::Vec3f& a, const osg::Vec3f& b, const osg::Vec3f& c, const osg::Vec3d& normal)
{
    return 0.5 * (osg::Vec3d((b - a) ^ (c - a)) * normal);
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

bool KVXCapGeometry::Follow(const vpe::CSection& section, const osg::Vec3d& normal)
{
    if (!m_movable || !m_faces || m_usedPoints.empty() || m_usedPoints.size() > kMostFollowedCorners)
        return false;
    const vpe::CSection straight = Straightened(section);
    const std::vector<osg::Vec3f> corners = pointsOf(straight);
    std::vector<osg::Vec3f> used;
    std::vector<std::uint32_t> match;
    if (corners.size() != m_usedPoints.size() || !usedPositions(used) || !matchCorners(used, corners, normal, match))
        return false;
    std::vector<osg::Vec3f> positions(used.size());
    for (std::size_t k = 0; k < used.size(); ++k)
        positions[k] = corners[match[k]];
    if (!coversAfterMove(positions, normal, signedArea(straight, normal)))
        return false;
    // The corners are points of the new section: the cap slides with them.
    std::vector<std::uint32_t> sources;
    if (!traceBack(positions, pointsOf(section), sources))
        return false;
    m_usedPoints = std::move(sources);
    return Move(positions);
}

bool KVXCapGeometry::usedPositions(std::vector<osg::Vec3f>& positions) const
{
    positions.assign(m_usedPoints.size(), osg::Vec3f());
    std::vector<bool> found(m_usedPoints.size(), false);
    const auto read = [&](const vpe::CPrimitiveRenderable* renderable, const std::vector<std::uint32_t>& sources) {
        const auto* vertices = renderable ? static_cast<const osg::Vec3Array*>(renderable->getVertexArray()) : nullptr;
        for (std::size_t i = 0; vertices && i < sources.size() && i < vertices->size(); ++i) {
            positions[sources[i]] = (*vertices)[i];
            found[sources[i]] = true;
        }
    };
    read(m_faces.get(), m_faceSources);
    read(m_edges.get(), m_edgeSources);
    return std::all_of(found.begin(), found.end(), [](bool f) { return f; });
}

bool KVXCapGeometry::matchCorners(const std::vector<osg::Vec3f>& used, const std::vector<osg::Vec3f>& corners,
                                  const osg::Vec3d& normal, std::vector<std::uint32_t>& match)
{
    const std::size_t n = corners.size();
    const osg::Vec3d unit = normal / normal.length();
    // A corner must stay much nearer its own place than any two corners are
    // to each other: then no corner can be taken for another.
    double spacing = std::numeric_limits<double>::max();
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = i + 1; j < n; ++j)
            spacing = std::min(spacing, double((corners[i] - corners[j]).length()));
    const double reach = 0.25 * spacing;
    std::vector<bool> taken(n, false);
    match.assign(used.size(), 0);
    for (std::size_t k = 0; k < used.size(); ++k) {
        // Onto the new plane: the plane's own step does not count.
        const osg::Vec3d offset = osg::Vec3d(used[k] - corners[0]);
        const osg::Vec3d onPlane = osg::Vec3d(used[k]) - unit * (offset * unit);
        std::size_t nearest = n;
        double best = reach;
        for (std::size_t j = 0; j < n; ++j) {
            const double distance = (onPlane - osg::Vec3d(corners[j])).length();
            if (distance < best) {
                best = distance;
                nearest = j;
            }
        }
        if (nearest == n || taken[nearest])
            return false;
        taken[nearest] = true;
        match[k] = static_cast<std::uint32_t>(nearest);
    }
    return true;
}

bool KVXCapGeometry::coversAfterMove(const std::vector<osg::Vec3f>& positions, const osg::Vec3d& normal,
                                     double area) const
{
    const auto* vertices = static_cast<const osg::Vec3Array*>(m_faces->getVertexArray());
    if (!vertices || vertices->size() != m_faceSources.size())
        return false;
    const osg::Vec3d unit = normal / normal.length();
    double covered = 0.0;
    for (std::size_t i = 0; i + 2 < m_faceSources.size(); i += 3) {
        const double before = signedArea((*vertices)[i], (*vertices)[i + 1], (*vertices)[i + 2], unit);
        const double after = signedArea(positions[m_faceSources[i]], positions[m_faceSources[i + 1]],
                                        positions[m_faceSources[i + 2]], unit);
        // A triangle turned over or flattened would fold the cap.
        if (!(before * after > 0.0))
            return false;
        covered += after;
    }
    return std::abs(std::abs(covered) - std::abs(area)) <= kAreaAgreement * std::abs(area);
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
