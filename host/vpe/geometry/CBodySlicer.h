#pragma once

#include "CBody.h"
#include "CSection.h"
#include "host/vpe/core/CReferenced.h"

#include <osg/Vec3d>

#include <cstdint>
#include <utility>
#include <vector>

namespace vpe {

// Sections of one closed body by parallel planes, for a plane that moves a
// little at a time (a cut sweeping through an element). While no vertex of
// the body lies between the last plane and the new one, the section runs
// through the same edges and only its points slide along them: the slicer
// then moves the points without looking at the triangles again.
//
// Loops follow CSection's convention (the body's material on their left seen
// from the side the normal points to).
class CBodySlicer : public CReferenced {
public:
    enum Result {
        // The plane passes beside the body.
        Missed,
        // The section is given.
        Sliced,
        // The plane goes through a vertex, or the body is not closed there:
        // the general split (CBooleanOperate) answers such planes.
        Degenerate,
    };

    // normal: the direction of every plane asked (need not be of unit
    // length).
    CBodySlicer(const CBody& body, const osg::Vec3d& normal);

    const CBody& GetBody() const { return *m_body; }
    const osg::Vec3d& GetNormal() const { return m_normal; }

    // The section by the plane through the point. sameLoops: the loops run
    // through the same edges as the last section given, point for point.
    Result Slice(const osg::Vec3d& point, CSection& section, bool& sameLoops);
    // Only for a plane that keeps the last section's loops: the points with
    // those indices (counted one loop after the other), in that order, into
    // points (its old content replaced). False, with nothing done, for any
    // other plane or an index past the last point.
    bool Slide(const osg::Vec3d& point, const std::vector<std::uint32_t>& which,
               std::vector<osg::Vec3f>& points) const;

protected:
    ~CBodySlicer() override = default;

private:
    using Edge = std::pair<std::uint32_t, std::uint32_t>;
    // The part of a section across one triangle: from the edge where the
    // triangle's boundary goes down through the plane to where it comes up.
    struct Piece {
        std::uint64_t from = 0;
        std::uint64_t to = 0;
        Edge edge;
    };

    bool findLoops(double level);
    void fillSection(double level, CSection& section) const;

    CRefPtr<const CBody> m_body;
    osg::Vec3d m_normal;
    // Each vertex's height along the normal, and all of them sorted.
    std::vector<double> m_heights;
    std::vector<double> m_sortedHeights;
    double m_tolerance = 0.0;
    // The loops of the last section, as the edges their points lie on, and
    // the heights between which they stay the same.
    std::vector<std::vector<Edge>> m_loops;
    // The same edges, one loop after the other.
    std::vector<Edge> m_flatEdges;
    // Reused by each search for loops.
    std::vector<Piece> m_pieces;
    std::vector<char> m_chained;
    double m_below = 0.0;
    double m_above = 0.0;
    bool m_haveLoops = false;
};

} // namespace vpe
