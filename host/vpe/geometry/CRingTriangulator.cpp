#include "CRingTriangulator.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <unordered_map>

namespace vpe {

namespace {

// Corners whose turn is below this (as a sine) are taken as straight.
constexpr double kStraight = 1e-10;

double cross(const osg::Vec2d& a, const osg::Vec2d& b, const osg::Vec2d& c)
{
    return (b.x() - a.x()) * (c.y() - a.y()) - (b.y() - a.y()) * (c.x() - a.x());
}

struct PointHash {
    std::size_t operator()(const osg::Vec2d& p) const
    {
        return std::hash<double>()(p.x()) * 31 + std::hash<double>()(p.y());
    }
};

} // namespace

CRingTriangulator::CRingTriangulator(const std::vector<osg::Vec2d>& points, const Ring& ring, double sign)
    : m_points(points), m_sign(sign)
{
    m_nodes.reserve(ring.size() + 8);
    m_start = AddLoop(ring);
}

int CRingTriangulator::AddNode(std::uint32_t index)
{
    m_nodes.push_back({index, -1, -1});
    return static_cast<int>(m_nodes.size()) - 1;
}

void CRingTriangulator::Link(int a, int b)
{
    m_nodes[a].next = b;
    m_nodes[b].prev = a;
}

int CRingTriangulator::AddLoop(const Ring& ring)
{
    const int first = AddNode(ring.front());
    int last = first;
    for (std::size_t i = 1; i < ring.size(); ++i) {
        const int node = AddNode(ring[i]);
        Link(last, node);
        last = node;
    }
    Link(last, first);
    return first;
}

void CRingTriangulator::AddHoles(std::vector<const Ring*> holes)
{
    // Joining holes from the right means that the ray from a hole's
    // rightmost point never meets a hole not yet joined.
    auto maxX = [this](const Ring* ring) {
        double x = -std::numeric_limits<double>::infinity();
        for (std::uint32_t index : *ring)
            x = std::max(x, m_points[index].x());
        return x;
    };
    std::sort(holes.begin(), holes.end(), [&](const Ring* a, const Ring* b) { return maxX(a) > maxX(b); });
    for (const Ring* hole : holes)
        AddHole(*hole);
}

void CRingTriangulator::AddHole(const Ring& hole)
{
    const int first = AddLoop(hole);
    int from = first, to = -1;
    if (!FindTouch(first, from, to)) {
        for (int node = m_nodes[first].next; node != first; node = m_nodes[node].next) {
            const osg::Vec2d& p = At(node);
            if (p.x() > At(from).x() || (p.x() == At(from).x() && p.y() < At(from).y()))
                from = node;
        }
        to = FindBridge(from);
    }
    // The ring runs ... bridge end, hole point, around the hole, hole point,
    // bridge end ...: the two copies let each side of the bridge be clipped.
    const int toCopy = AddNode(m_nodes[to].index);
    const int fromCopy = AddNode(m_nodes[from].index);
    const int toNext = m_nodes[to].next;
    const int fromPrev = m_nodes[from].prev;
    Link(to, from);
    Link(fromPrev, fromCopy);
    Link(fromCopy, toCopy);
    Link(toCopy, toNext);
}

bool CRingTriangulator::FindTouch(int hole, int& from, int& to) const
{
    // Where the hole touches the ring, a bridge of no length is the one that
    // cannot cross anything; ear tests would not see past the two copies of
    // that point otherwise.
    std::unordered_map<osg::Vec2d, int, PointHash> points;
    int node = hole;
    do {
        points.emplace(At(node), node);
        node = m_nodes[node].next;
    } while (node != hole);
    node = m_start;
    do {
        const auto touch = points.find(At(node));
        if (touch != points.end()) {
            from = touch->second;
            to = node;
            return true;
        }
        node = m_nodes[node].next;
    } while (node != m_start);
    return false;
}

int CRingTriangulator::FindBridge(int hole) const
{
    // Cast a ray towards +x and take the nearest edge it meets. It leaves the
    // material there, so only edges running upwards (material on their left)
    // count.
    const osg::Vec2d& h = At(hole);
    double hitX = std::numeric_limits<double>::infinity();
    int candidate = -1;
    int node = m_start;
    do {
        const int next = m_nodes[node].next;
        const osg::Vec2d& a = At(node);
        const osg::Vec2d& b = At(next);
        if (a.y() <= h.y() && h.y() <= b.y() && a.y() < b.y()) {
            const double x = a.x() + (h.y() - a.y()) * (b.x() - a.x()) / (b.y() - a.y());
            if (x >= h.x() && x < hitX) {
                hitX = x;
                candidate = a.x() > b.x() ? node : next;
            }
        }
        node = next;
    } while (node != m_start);
    // A ray that meets nothing leaves a hole outside its loop; the nearest
    // point still keeps the ring whole.
    return candidate < 0 ? Nearest(h) : MostVisible(hole, candidate, hitX);
}

int CRingTriangulator::Nearest(const osg::Vec2d& p) const
{
    int nearest = m_start;
    for (int node = m_nodes[m_start].next; node != m_start; node = m_nodes[node].next) {
        if ((At(node) - p).length2() < (At(nearest) - p).length2())
            nearest = node;
    }
    return nearest;
}

int CRingTriangulator::MostVisible(int hole, int candidate, double hitX) const
{
    // The edge's far end may be hidden behind other vertices inside the
    // triangle (hole point, hit point, far end); of those, the one seen at
    // the smallest angle from the ray is visible. Where several nodes share
    // a point, only one has the hole within its corner.
    const osg::Vec2d& h = At(hole);
    const osg::Vec2d hit(hitX, h.y());
    const osg::Vec2d m = At(candidate);
    const double side = cross(h, hit, m);
    int best = -1;
    double bestTan = std::numeric_limits<double>::infinity();
    int node = m_start;
    do {
        const osg::Vec2d& p = At(node);
        const bool inside = p.x() > h.x() && cross(h, hit, p) * side >= 0.0 && cross(hit, m, p) * side >= 0.0 &&
                            cross(m, h, p) * side >= 0.0;
        if (inside && IsLocallyInside(node, h)) {
            const double tan = std::abs(p.y() - h.y()) / (p.x() - h.x());
            if (best < 0 || tan < bestTan || (tan == bestTan && p.x() < At(best).x())) {
                best = node;
                bestTan = tan;
            }
        }
        node = m_nodes[node].next;
    } while (node != m_start);
    return best < 0 ? candidate : best;
}

int CRingTriangulator::Distinct(int node, bool forward) const
{
    int other = node;
    do
        other = forward ? m_nodes[other].next : m_nodes[other].prev;
    while (At(other) == At(node) && other != node);
    return other;
}

bool CRingTriangulator::IsLocallyInside(int node, const osg::Vec2d& p) const
{
    // The corner is taken between the nearest other points, so that copies
    // of a point made by bridges do not hide it.
    const osg::Vec2d& a = At(Distinct(node, false));
    const osg::Vec2d& b = At(node);
    const osg::Vec2d& c = At(Distinct(node, true));
    const bool leftOfOutgoing = m_sign * cross(b, c, p) >= 0.0;
    const bool leftOfIncoming = m_sign * cross(a, b, p) >= 0.0;
    return m_sign * cross(a, b, c) >= 0.0 ? leftOfOutgoing && leftOfIncoming : leftOfOutgoing || leftOfIncoming;
}

double CRingTriangulator::Turn(int node) const
{
    return m_sign * cross(At(m_nodes[node].prev), At(node), At(m_nodes[node].next));
}

void CRingTriangulator::UpdateReflex(int node)
{
    Node& n = m_nodes[node];
    const bool wasReflex = n.reflex;
    n.reflex = Turn(node) <= 0.0;
    if (n.reflex && !n.blocker) {
        n.blocker = true;
        m_blockers.push_back(node);
    } else if (wasReflex && !n.reflex) {
        ++m_deadBlockers;
    }
}

bool CRingTriangulator::IsEar(int node, bool touchingBlocks) const
{
    const int prev = m_nodes[node].prev;
    const int next = m_nodes[node].next;
    const osg::Vec2d& a = At(prev);
    const osg::Vec2d& b = At(node);
    const osg::Vec2d& c = At(next);
    if (m_sign * cross(a, b, c) <= 0.0)
        return false;
    // A point on an edge of the ear touches it, also when rounding (of a
    // turned outline) has put it a hair outside: taken for clear, such a
    // point let an ear swallow the ring running on from it, and the
    // triangles folded back over the outside.
    const double touching = kStraight * std::max({(b - a).length2(), (c - b).length2(), (a - c).length2()});
    const double minX = std::min({a.x(), b.x(), c.x()}), maxX = std::max({a.x(), b.x(), c.x()});
    const double minY = std::min({a.y(), b.y(), c.y()}), maxY = std::max({a.y(), b.y(), c.y()});
    for (int blocker : m_blockers) {
        const Node& n = m_nodes[blocker];
        if (n.removed || !n.reflex || blocker == prev || blocker == node || blocker == next)
            continue;
        const osg::Vec2d& p = At(blocker);
        if (p.x() < minX || p.x() > maxX || p.y() < minY || p.y() > maxY || p == a || p == b || p == c)
            continue;
        const double ab = m_sign * cross(a, b, p), bc = m_sign * cross(b, c, p), ca = m_sign * cross(c, a, p);
        if (touchingBlocks ? ab >= -touching && bc >= -touching && ca >= -touching : ab > 0.0 && bc > 0.0 && ca > 0.0)
            return false;
    }
    return true;
}

int CRingTriangulator::FallbackEar(int node) const
{
    // Only a ring that touches or crosses itself gets here, as where two
    // holes share an edge. An ear that other points only touch comes
    // first, then any convex corner, which does the least harm.
    int candidate = node;
    do {
        if (IsEar(candidate, false))
            return candidate;
        candidate = m_nodes[candidate].next;
    } while (candidate != node);
    do {
        if (Turn(candidate) > 0.0)
            return candidate;
        candidate = m_nodes[candidate].next;
    } while (candidate != node);
    return node;
}

void CRingTriangulator::Remove(int node)
{
    Node& n = m_nodes[node];
    n.removed = true;
    if (n.blocker && n.reflex)
        ++m_deadBlockers;
    Link(n.prev, n.next);
    if (m_start == node)
        m_start = n.next;
    UpdateReflex(n.prev);
    UpdateReflex(n.next);
    if (2 * m_deadBlockers > m_blockers.size())
        PruneBlockers();
}

void CRingTriangulator::PruneBlockers()
{
    auto dead = [this](int node) {
        Node& n = m_nodes[node];
        if (!n.removed && n.reflex)
            return false;
        n.blocker = false;
        return true;
    };
    m_blockers.erase(std::remove_if(m_blockers.begin(), m_blockers.end(), dead), m_blockers.end());
    m_deadBlockers = 0;
}

int CRingTriangulator::RemoveFlat(int node, std::size_t& count, std::vector<CBody::Triangle>& triangles)
{
    const int prev = m_nodes[node].prev;
    const osg::Vec2d& a = At(prev);
    const osg::Vec2d& b = At(node);
    const osg::Vec2d& c = At(m_nodes[node].next);
    // A straight corner, a spike (as at the far end of a bridge) or a step of
    // no length encloses nothing: clipping it leaves the region as it was,
    // and its sliver keeps the ring's edges closed.
    if (std::abs(cross(a, b, c)) > kStraight * (b - a).length() * (c - b).length())
        return -1;
    Clip(node, triangles);
    count -= 1;
    return prev;
}

void CRingTriangulator::Clip(int node, std::vector<CBody::Triangle>& triangles)
{
    const CBody::Triangle t{m_nodes[m_nodes[node].prev].index, m_nodes[node].index,
                            m_nodes[m_nodes[node].next].index};
    // With a corner repeated (out along a bridge and back) the triangle's
    // edges pair up among themselves, and it is left out.
    if (t[0] != t[1] && t[1] != t[2] && t[2] != t[0])
        triangles.push_back(t);
    Remove(node);
}

void CRingTriangulator::Triangulate(std::vector<CBody::Triangle>& triangles)
{
    std::size_t count = 0;
    std::vector<int> pending;
    int node = m_start;
    do {
        UpdateReflex(node);
        pending.push_back(node);
        ++count;
        node = m_nodes[node].next;
    } while (node != m_start);

    // Flat corners go first, which leaves only true corners to search ears
    // among: finely divided straight edges would otherwise make every ear
    // test pay for every point along them.
    while (!pending.empty() && count > 3) {
        node = pending.back();
        pending.pop_back();
        if (m_nodes[node].removed)
            continue;
        const int prev = RemoveFlat(node, count, triangles);
        if (prev >= 0) {
            pending.push_back(prev);
            pending.push_back(m_nodes[prev].next);
        }
    }

    node = m_start;
    std::size_t misses = 0;
    while (count > 3) {
        const int prev = RemoveFlat(node, count, triangles);
        if (prev >= 0) {
            node = m_nodes[prev].next;
        } else if (IsEar(node, true) || misses >= count) {
            const int ear = misses >= count ? FallbackEar(node) : node;
            const int earNext = m_nodes[ear].next;
            Clip(ear, triangles);
            count -= 1;
            node = earNext;
        } else {
            node = m_nodes[node].next;
            ++misses;
            continue;
        }
        misses = 0;
    }
    if (count == 3)
        Clip(node, triangles);
}
} // namespace vpe
