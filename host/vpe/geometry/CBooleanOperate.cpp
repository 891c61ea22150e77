#include "CBooleanOperate.h"

#include "CPlane.h"
#include "CSection.h"
#include "GBodyBuilder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <unordered_map>
#include <vector>

namespace vpe {

namespace {

// Vertices nearer the plane than this share of the body's size lie on it.
constexpr double kRelativeTolerance = 1e-9;
constexpr std::size_t kNoEdge = std::numeric_limits<std::size_t>::max();

struct Edge {
    std::uint32_t from;
    std::uint32_t to;
};

using IndexLoop = std::vector<std::uint32_t>;

std::uint64_t edgeKey(std::uint32_t a, std::uint32_t b)
{
    return (static_cast<std::uint64_t>(std::min(a, b)) << 32) | std::max(a, b);
}

// One split in progress: the side of the plane each of the body's vertices
// lies on, the crossing points (numbered on from the body's vertices), and
// the triangles of each part as indices into both.
class BodySplitter {
public:
    BodySplitter(const CBody& body, const CPlane& plane);

    bool Cuts() const { return m_positiveCount > 0 && m_negativeCount > 0; }
    void Split();
    std::vector<IndexLoop> ChainLoops() const;
    void Cap(const std::vector<IndexLoop>& loops);
    CSection::Loop LoopPoints(const IndexLoop& loop) const;
    CBody* BuildPart(bool positive) const;

private:
    int Side(std::uint32_t vertex) const { return vertex < m_sides.size() ? m_sides[vertex] : 0; }
    const osg::Vec3d& Point(std::uint32_t vertex) const
    {
        return vertex < m_sides.size() ? m_bodyVertices[vertex] : m_crossingPoints[vertex - m_sides.size()];
    }
    std::uint32_t VertexCount() const { return static_cast<std::uint32_t>(m_sides.size() + m_crossingPoints.size()); }
    void AddPositive(const CBody::Triangle& t);
    void AddNegative(const CBody::Triangle& t) { m_negative.push_back(t); }
    // A triangle lying in the plane: with its area facing along the normal
    // it closes the negative part from above, else the positive one from
    // below; 0 for one of no area, which faces nowhere.
    int Facing(const CBody::Triangle& t) const;
    void AddInPlane(const CBody::Triangle& t, bool positive, std::unordered_map<std::uint64_t, int>& sides);
    // Triangles of no area in the plane go with the in-plane triangles
    // around them: the sign of a 1e-9 mm² area put two of one ledge on
    // opposite sides, and an edge of a part was used four times.
    void PlaceFlat(std::vector<CBody::Triangle> flat, std::unordered_map<std::uint64_t, int>& sides);
    void Clip(const CBody::Triangle& t);
    std::uint32_t Crossing(std::uint32_t a, std::uint32_t b);
    std::vector<Edge> BoundaryEdges() const;
    std::size_t NextEdge(const std::vector<Edge>& edges, const std::vector<bool>& used, std::uint32_t previous,
                         std::uint32_t from) const;
    // Signed angle between the edges into and out of the corner, in the
    // plane: positive to the left.
    double Turn(std::uint32_t previous, std::uint32_t at, std::uint32_t next) const;

    const CBody& m_body;
    const CPlane& m_plane;
    const std::vector<osg::Vec3d>& m_bodyVertices;
    std::vector<signed char> m_sides;
    std::vector<osg::Vec3d> m_crossingPoints;
    std::size_t m_positiveCount = 0;
    std::size_t m_negativeCount = 0;
    std::unordered_map<std::uint64_t, std::uint32_t> m_crossings;
    std::vector<CBody::Triangle> m_positive;
    std::vector<CBody::Triangle> m_negative;
    // The positive part's edges with both ends on the plane: the section is
    // where they do not pair up among themselves.
    std::vector<Edge> m_planeEdges;
};

BodySplitter::BodySplitter(const CBody& body, const CPlane& plane)
    : m_body(body), m_plane(plane), m_bodyVertices(body.GetVertices())
{
    const osg::BoundingBoxd box = body.GetBoundingBox();
    const double tolerance = kRelativeTolerance * (box.valid() ? (box._max - box._min).length() : 0.0);
    m_sides.reserve(m_bodyVertices.size());
    for (const osg::Vec3d& v : m_bodyVertices) {
        const double distance = plane.GetDistance(v);
        const signed char side = distance > tolerance ? 1 : distance < -tolerance ? -1 : 0;
        m_sides.push_back(side);
        m_positiveCount += side > 0;
        m_negativeCount += side < 0;
    }
}

void BodySplitter::Split()
{
    const std::size_t count = m_body.GetTriangles().size();
    m_positive.reserve(count);
    m_negative.reserve(count);
    std::unordered_map<std::uint64_t, int> inPlaneSides;
    std::vector<CBody::Triangle> flat;
    for (const CBody::Triangle& t : m_body.GetTriangles()) {
        // A repeated corner makes no area, and the triangle's edges pair up
        // among themselves.
        if (t[0] == t[1] || t[1] == t[2] || t[2] == t[0])
            continue;
        const int a = m_sides[t[0]], b = m_sides[t[1]], c = m_sides[t[2]];
        const int lowest = std::min({a, b, c}), highest = std::max({a, b, c});
        if (lowest >= 0 && highest > 0) {
            AddPositive(t);
        } else if (highest <= 0 && lowest < 0) {
            AddNegative(t);
        } else if (lowest < 0) {
            Clip(t);
        } else if (const int facing = Facing(t)) {
            AddInPlane(t, facing < 0, inPlaneSides);
        } else {
            flat.push_back(t);
        }
    }
    PlaceFlat(std::move(flat), inPlaneSides);
}

int BodySplitter::Facing(const CBody::Triangle& t) const
{
    const osg::Vec3d& p = Point(t[0]);
    const osg::Vec3d& q = Point(t[1]);
    const osg::Vec3d& r = Point(t[2]);
    const double longest = std::max({(q - p).length2(), (r - q).length2(), (p - r).length2()});
    const double along = ((q - p) ^ (r - p)) * m_plane.GetNormal();
    if (std::abs(along) <= kRelativeTolerance * longest)
        return 0;
    return along > 0.0 ? 1 : -1;
}

void BodySplitter::AddInPlane(const CBody::Triangle& t, bool positive,
                              std::unordered_map<std::uint64_t, int>& sides)
{
    positive ? AddPositive(t) : AddNegative(t);
    for (int k = 0; k < 3; ++k)
        sides[edgeKey(t[k], t[(k + 1) % 3])] = positive ? 1 : -1;
}

void BodySplitter::PlaceFlat(std::vector<CBody::Triangle> flat, std::unordered_map<std::uint64_t, int>& sides)
{
    // Placed ones tell their neighbours in turn; what touches none goes by
    // its (meaningless) sign, as before.
    bool placed = true;
    while (!flat.empty() && placed) {
        placed = false;
        for (std::size_t i = 0; i < flat.size();) {
            const CBody::Triangle& t = flat[i];
            int side = 0;
            for (int k = 0; k < 3 && side == 0; ++k) {
                const auto found = sides.find(edgeKey(t[k], t[(k + 1) % 3]));
                if (found != sides.end())
                    side = found->second;
            }
            if (side == 0) {
                ++i;
                continue;
            }
            AddInPlane(t, side > 0, sides);
            flat[i] = flat.back();
            flat.pop_back();
            placed = true;
        }
    }
    for (const CBody::Triangle& t : flat) {
        const osg::Vec3d& p = Point(t[0]);
        const bool facesAlong = ((Point(t[1]) - p) ^ (Point(t[2]) - p)) * m_plane.GetNormal() > 0.0;
        facesAlong ? AddNegative(t) : AddPositive(t);
    }
}

void BodySplitter::AddPositive(const CBody::Triangle& t)
{
    m_positive.push_back(t);
    for (int k = 0; k < 3; ++k) {
        const std::uint32_t from = t[k], to = t[(k + 1) % 3];
        if (Side(from) == 0 && Side(to) == 0)
            m_planeEdges.push_back({from, to});
    }
}

void BodySplitter::Clip(const CBody::Triangle& t)
{
    // Walk the corners, sending each to its side (both when on the plane)
    // and each crossing to both; a side gets a triangle or a convex quad.
    std::array<std::uint32_t, 4> positive{}, negative{};
    std::size_t positiveCount = 0, negativeCount = 0;
    for (int k = 0; k < 3; ++k) {
        const std::uint32_t v = t[k], w = t[(k + 1) % 3];
        if (Side(v) >= 0)
            positive[positiveCount++] = v;
        if (Side(v) <= 0)
            negative[negativeCount++] = v;
        if (Side(v) * Side(w) < 0) {
            const std::uint32_t crossing = Crossing(v, w);
            positive[positiveCount++] = crossing;
            negative[negativeCount++] = crossing;
        }
    }
    for (std::size_t i = 1; i + 1 < positiveCount; ++i)
        AddPositive({positive[0], positive[i], positive[i + 1]});
    for (std::size_t i = 1; i + 1 < negativeCount; ++i)
        AddNegative({negative[0], negative[i], negative[i + 1]});
}

std::uint32_t BodySplitter::Crossing(std::uint32_t a, std::uint32_t b)
{
    // Keyed and computed from the lower index, so that both triangles of the
    // edge get the very same point.
    const std::uint32_t low = std::min(a, b), high = std::max(a, b);
    const std::uint64_t key = (static_cast<std::uint64_t>(low) << 32) | high;
    const auto [it, added] = m_crossings.try_emplace(key, VertexCount());
    if (added) {
        const osg::Vec3d& from = m_bodyVertices[low];
        const osg::Vec3d& to = m_bodyVertices[high];
        const double distance = m_plane.GetDistance(from);
        m_crossingPoints.push_back(from + (to - from) * (distance / (distance - m_plane.GetDistance(to))));
    }
    return it->second;
}

std::vector<Edge> BodySplitter::BoundaryEdges() const
{
    // Count each undirected edge up one way and down the other; what is left
    // has no partner in the positive part.
    struct Counted {
        std::uint64_t key;
        int direction;
    };
    std::vector<Counted> counted;
    counted.reserve(m_planeEdges.size());
    for (const Edge& e : m_planeEdges) {
        const bool up = e.from < e.to;
        const std::uint64_t low = up ? e.from : e.to, high = up ? e.to : e.from;
        counted.push_back({(low << 32) | high, up ? 1 : -1});
    }
    std::sort(counted.begin(), counted.end(), [](const Counted& a, const Counted& b) { return a.key < b.key; });
    std::vector<Edge> boundary;
    for (std::size_t i = 0; i < counted.size();) {
        int net = 0;
        std::size_t j = i;
        for (; j < counted.size() && counted[j].key == counted[i].key; ++j)
            net += counted[j].direction;
        const auto low = static_cast<std::uint32_t>(counted[i].key >> 32);
        const auto high = static_cast<std::uint32_t>(counted[i].key & 0xffffffffu);
        for (int k = 0; k < std::abs(net); ++k)
            boundary.push_back(net > 0 ? Edge{low, high} : Edge{high, low});
        i = j;
    }
    return boundary;
}

std::vector<IndexLoop> BodySplitter::ChainLoops() const
{
    std::vector<Edge> edges = BoundaryEdges();
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.from < b.from; });
    std::vector<bool> used(edges.size(), false);
    std::vector<IndexLoop> loops;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        if (used[i])
            continue;
        used[i] = true;
        IndexLoop loop{edges[i].from};
        std::uint32_t previous = edges[i].from, current = edges[i].to;
        bool closed = true;
        while (current != loop.front()) {
            loop.push_back(current);
            const std::size_t next = NextEdge(edges, used, previous, current);
            if (next == kNoEdge) {
                closed = false;
                break;
            }
            used[next] = true;
            previous = current;
            current = edges[next].to;
        }
        // Only an open body leaves a chain that does not come back.
        if (closed)
            loops.push_back(std::move(loop));
    }
    return loops;
}

std::size_t BodySplitter::NextEdge(const std::vector<Edge>& edges, const std::vector<bool>& used,
                                   std::uint32_t previous, std::uint32_t from) const
{
    // Where loops meet at this vertex, take the sharpest left turn, so that
    // the chain follows the edge of one piece of material. Turns are only
    // measured then.
    const auto first = std::lower_bound(edges.begin(), edges.end(), from,
                                        [](const Edge& e, std::uint32_t vertex) { return e.from < vertex; });
    std::size_t best = kNoEdge;
    double bestTurn = 0.0;
    bool measured = false;
    for (auto it = first; it != edges.end() && it->from == from; ++it) {
        const auto index = static_cast<std::size_t>(it - edges.begin());
        if (used[index])
            continue;
        if (best == kNoEdge) {
            best = index;
            continue;
        }
        if (!measured) {
            bestTurn = Turn(previous, from, edges[best].to);
            measured = true;
        }
        const double turn = Turn(previous, from, it->to);
        if (turn > bestTurn) {
            best = index;
            bestTurn = turn;
        }
    }
    return best;
}

double BodySplitter::Turn(std::uint32_t previous, std::uint32_t at, std::uint32_t next) const
{
    const osg::Vec2d corner = m_plane.ToPlane(Point(at));
    const osg::Vec2d in = corner - m_plane.ToPlane(Point(previous));
    const osg::Vec2d out = m_plane.ToPlane(Point(next)) - corner;
    return std::atan2(in.x() * out.y() - in.y() * out.x(), in * out);
}

void BodySplitter::Cap(const std::vector<IndexLoop>& loops)
{
    std::vector<std::vector<osg::Vec2d>> flat;
    std::vector<std::uint32_t> vertexOf;
    for (const IndexLoop& loop : loops) {
        std::vector<osg::Vec2d>& points = flat.emplace_back();
        for (std::uint32_t v : loop) {
            points.push_back(m_plane.ToPlane(Point(v)));
            vertexOf.push_back(v);
        }
    }
    // The caps keep each loop edge in its own direction for the negative
    // part, whose cut edges run the other way, and reversed for the positive
    // part; so both close.
    for (const CBody::Triangle& t : GBodyBuilder::TriangulateLoops(flat)) {
        const std::uint32_t a = vertexOf[t[0]], b = vertexOf[t[1]], c = vertexOf[t[2]];
        // A loop through one vertex twice leaves slivers there whose edges
        // pair up among themselves.
        if (a == b || b == c || c == a)
            continue;
        m_negative.push_back({a, b, c});
        m_positive.push_back({c, b, a});
    }
}

CSection::Loop BodySplitter::LoopPoints(const IndexLoop& loop) const
{
    CSection::Loop points;
    points.reserve(loop.size());
    for (std::uint32_t v : loop)
        points.push_back(Point(v));
    return points;
}

CBody* BodySplitter::BuildPart(bool positive) const
{
    const std::vector<CBody::Triangle>& source = positive ? m_positive : m_negative;
    // Numbered first and filled after, so that the part's arrays are
    // allocated once at their size.
    constexpr std::uint32_t kUnused = std::numeric_limits<std::uint32_t>::max();
    std::vector<std::uint32_t> remap(VertexCount(), kUnused);
    std::uint32_t used = 0;
    std::vector<CBody::Triangle> triangles(source.size());
    for (std::size_t i = 0; i < source.size(); ++i) {
        for (int k = 0; k < 3; ++k) {
            std::uint32_t& index = remap[source[i][k]];
            if (index == kUnused)
                index = used++;
            triangles[i][k] = index;
        }
    }
    std::vector<osg::Vec3d> vertices(used);
    for (std::uint32_t v = 0; v < remap.size(); ++v) {
        if (remap[v] != kUnused)
            vertices[remap[v]] = Point(v);
    }
    return new CBody(std::move(vertices), std::move(triangles));
}

} // namespace

CBooleanOperate::CBooleanOperate(bool buildPositive, bool buildNegative, bool buildSection, bool capParts)
    : m_buildPositive(buildPositive), m_buildNegative(buildNegative), m_buildSection(buildSection),
      m_capParts(capParts)
{
}

bool CBooleanOperate::SplitBody(const CBody& body, const CPlane& plane, CRefPtr<CBody>& positivePart,
                                CRefPtr<CBody>& negativePart, CSection& section) const
{
    positivePart = nullptr;
    negativePart = nullptr;
    section.Clear();
    if (!plane.IsValid() || body.IsEmpty())
        return false;
    BodySplitter splitter(body, plane);
    if (!splitter.Cuts())
        return false;
    splitter.Split();
    if (m_buildSection || m_capParts) {
        const std::vector<IndexLoop> loops = splitter.ChainLoops();
        if (m_capParts)
            splitter.Cap(loops);
        if (m_buildSection) {
            for (const IndexLoop& loop : loops)
                section.AddLoop(splitter.LoopPoints(loop));
        }
    }
    if (m_buildPositive)
        positivePart = splitter.BuildPart(true);
    if (m_buildNegative)
        negativePart = splitter.BuildPart(false);
    return true;
}

} // namespace vpe
