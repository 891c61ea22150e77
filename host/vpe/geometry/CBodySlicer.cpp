#include "CBodySlicer.h"

#include <algorithm>

namespace vpe {

namespace {

std::uint64_t keyOf(std::uint32_t a, std::uint32_t b)
{
    return (static_cast<std::uint64_t>(std::min(a, b)) << 32) | std::max(a, b);
}

} // namespace

CBodySlicer::CBodySlicer(const CBody& body, const osg::Vec3d& normal) : m_body(&body), m_normal(normal)
{
    m_normal.normalize();
    m_heights.reserve(body.GetVertices().size());
    for (const osg::Vec3d& vertex : body.GetVertices())
        m_heights.push_back(vertex * m_normal);
    m_sortedHeights = m_heights;
    std::sort(m_sortedHeights.begin(), m_sortedHeights.end());
    // As the general split: closer than 1e-9 of the body's size is on the
    // plane.
    const osg::BoundingBoxd box = body.GetBoundingBox();
    m_tolerance = box.valid() ? (box._max - box._min).length() * 1e-9 : 0.0;
}

CBodySlicer::Result CBodySlicer::Slice(const osg::Vec3d& point, CSection& section, bool& sameLoops)
{
    section.Clear();
    sameLoops = false;
    const double level = point * m_normal;
    if (m_sortedHeights.empty() || level <= m_sortedHeights.front() - m_tolerance ||
        level >= m_sortedHeights.back() + m_tolerance)
        return Missed;
    if (m_haveLoops && level > m_below && level < m_above) {
        sameLoops = true;
        fillSection(level, section);
        return Sliced;
    }
    // The vertex heights on either side of the plane.
    const auto above = std::upper_bound(m_sortedHeights.begin(), m_sortedHeights.end(), level);
    // Within the tolerance of the lowest or the highest vertex: there is no
    // height on one side to read.
    if (above == m_sortedHeights.begin() || above == m_sortedHeights.end())
        return Degenerate;
    const double next = *above;
    const double previous = *(above - 1);
    if (level - previous <= m_tolerance || next - level <= m_tolerance)
        return Degenerate;
    if (!findLoops(level))
        return Degenerate;
    m_below = previous + m_tolerance;
    m_above = next - m_tolerance;
    fillSection(level, section);
    return Sliced;
}

bool CBodySlicer::findLoops(double level)
{
    m_haveLoops = false;
    m_loops.clear();
    // Each crossed triangle gives one piece of the section, from the edge
    // where its boundary goes down through the plane to the edge where it
    // comes back up; the next piece starts where this one ends. The pieces
    // are kept in a list sorted by where they start, reused from call to
    // call: a sweeping cut crosses vertex levels many times a second.
    m_pieces.clear();
    for (const CBody::Triangle& t : m_body->GetTriangles()) {
        Piece piece;
        int crossings = 0;
        for (int k = 0; k < 3; ++k) {
            const std::uint32_t a = t[k], b = t[(k + 1) % 3];
            const bool aAbove = m_heights[a] > level;
            if (aAbove == (m_heights[b] > level))
                continue;
            ++crossings;
            if (aAbove) {
                piece.from = keyOf(a, b);
                piece.edge = Edge(std::min(a, b), std::max(a, b));
            } else {
                piece.to = keyOf(a, b);
            }
        }
        if (crossings == 0)
            continue;
        if (crossings != 2)
            return false;
        m_pieces.push_back(piece);
    }
    const auto byStart = [](const Piece& a, const Piece& b) { return a.from < b.from; };
    std::sort(m_pieces.begin(), m_pieces.end(), byStart);
    // Two pieces from one edge: the body is not closed there.
    for (std::size_t i = 1; i < m_pieces.size(); ++i)
        if (m_pieces[i].from == m_pieces[i - 1].from)
            return false;
    // Chain the pieces into loops.
    m_chained.assign(m_pieces.size(), 0);
    for (std::size_t first = 0; first < m_pieces.size(); ++first) {
        if (m_chained[first])
            continue;
        std::vector<Edge>& loop = m_loops.emplace_back();
        std::size_t at = first;
        do {
            if (m_chained[at])
                return false; // a chain that runs into another
            m_chained[at] = 1;
            loop.push_back(m_pieces[at].edge);
            Piece next;
            next.from = m_pieces[at].to;
            const auto found = std::lower_bound(m_pieces.begin(), m_pieces.end(), next, byStart);
            if (found == m_pieces.end() || found->from != next.from)
                return false; // an open body
            at = static_cast<std::size_t>(found - m_pieces.begin());
        } while (at != first);
    }
    m_flatEdges.clear();
    for (const std::vector<Edge>& loop : m_loops)
        m_flatEdges.insert(m_flatEdges.end(), loop.begin(), loop.end());
    m_haveLoops = true;
    return true;
}

bool CBodySlicer::Slide(const osg::Vec3d& point, const std::vector<std::uint32_t>& which,
                        std::vector<osg::Vec3f>& points) const
{
    const double level = point * m_normal;
    if (!m_haveLoops || !(level > m_below && level < m_above))
        return false;
    const std::vector<osg::Vec3d>& vertices = m_body->GetVertices();
    points.clear();
    for (std::uint32_t index : which) {
        if (index >= m_flatEdges.size())
            return false;
        const Edge& edge = m_flatEdges[index];
        const double ha = m_heights[edge.first];
        const double t = (level - ha) / (m_heights[edge.second] - ha);
        points.emplace_back(vertices[edge.first] + (vertices[edge.second] - vertices[edge.first]) * t);
    }
    return true;
}

void CBodySlicer::fillSection(double level, CSection& section) const
{
    const std::vector<osg::Vec3d>& vertices = m_body->GetVertices();
    for (const std::vector<Edge>& edges : m_loops) {
        CSection::Loop loop;
        loop.reserve(edges.size());
        for (const Edge& edge : edges) {
            const double ha = m_heights[edge.first];
            const double hb = m_heights[edge.second];
            const double t = (level - ha) / (hb - ha);
            loop.push_back(vertices[edge.first] + (vertices[edge.second] - vertices[edge.first]) * t);
        }
        section.AddLoop(std::move(loop));
    }
}

} // namespace vpe
