#pragma once

#include "KVXAnimPlane.h"

#include "host/vpe/core/CReferenced.h"

#include <osg/Vec3f>

#include <cstdint>
#include <vector>

class KVXElementObject;

#include "host/vpe/geometry/CSection.h"

namespace vpe {
class CPlane;
class CPrimitiveRenderable;
class CStateSet;
} // namespace vpe

// The renderables of one cut cap, and for each of their vertices the point
// of the section it came from: a later section that runs through the same
// edges (its points only slid) moves the cap instead of remaking it.
class KVXCapGeometry {
public:
    KVXCapGeometry();
    ~KVXCapGeometry();

    // Covers the section (tessellated by the element), keeps the part inside
    // the bounds and makes the renderables; none when nothing is left. A
    // movable cap (one not clipped to bounds) can follow later sections
    // through the same edges.
    void Make(const KVXElementObject& element, const vpe::CSection& section, const vpe::CPlane& plane,
              const std::vector<KVXAnimPlane>& bounds, bool movable, vpe::CStateSet* faceState,
              vpe::CStateSet* edgeState);
    // The points of its section (counted one loop after the other) the cap's
    // vertices stand on; empty when it cannot move.
    const std::vector<std::uint32_t>& UsedPoints() const { return m_usedPoints; }
    // Moves the cap onto new positions of its used points, in their order;
    // false when it cannot.
    bool Move(const std::vector<osg::Vec3f>& points);
    // Moves the cap onto a new section (of the same body, by a parallel plane
    // with this normal) whose corners are the cap's own a short way off, one
    // for one: the plane crossed a vertex level, so the section runs through
    // other edges, but its outline kept its shape. The cap's triangles must
    // keep their facing and cover the new outline's area exactly; the cap
    // then follows the new section's points. False, with the cap as it was,
    // otherwise.
    bool Follow(const vpe::CSection& section, const osg::Vec3d& normal);
    void Clear();

    vpe::CPrimitiveRenderable* Faces() const { return m_faces.get(); }
    vpe::CPrimitiveRenderable* Edges() const { return m_edges.get(); }

    // The section without the points where its loops run straight on (and
    // without points met twice, and without pairs of loops that cancel):
    // fewer triangles to cover and fewer edges to draw, the same face.
    static vpe::CSection Straightened(const vpe::CSection& section);

private:
    static std::vector<osg::Vec3f> pointsOf(const vpe::CSection& section);
    // Where each vertex is among the points; false when one is not.
    static bool traceBack(const std::vector<osg::Vec3f>& vertices, const std::vector<osg::Vec3f>& points,
                          std::vector<std::uint32_t>& sources);
    void keepUsedPoints();
    // Where each used point stands now, read from the cap's arrays; false
    // when one is not found there.
    bool usedPositions(std::vector<osg::Vec3f>& positions) const;
    // For each used point, the corner it went to; false unless one for one
    // and unambiguous.
    static bool matchCorners(const std::vector<osg::Vec3f>& used, const std::vector<osg::Vec3f>& corners,
                             const osg::Vec3d& normal, std::vector<std::uint32_t>& match);
    // Whether the faces, moved onto these positions, keep their facing and
    // cover the area.
    bool coversAfterMove(const std::vector<osg::Vec3f>& positions, const osg::Vec3d& normal, double area) const;
    static void moveArray(vpe::CPrimitiveRenderable* renderable, const std::vector<std::uint32_t>& sources,
                          const std::vector<osg::Vec3f>& points);

    vpe::CRefPtr<vpe::CPrimitiveRenderable> m_faces;
    vpe::CRefPtr<vpe::CPrimitiveRenderable> m_edges;
    std::vector<std::uint32_t> m_faceSources;
    std::vector<std::uint32_t> m_edgeSources;
    std::vector<std::uint32_t> m_usedPoints;
    bool m_movable = false;
};
