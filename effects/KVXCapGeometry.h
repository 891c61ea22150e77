#pragma once

#include "KVXAnimPlane.h"

#include "host/vpe/CReferenced.h"

#include <osg/Vec3f>

#include <cstdint>
#include <vector>

class KVXElementObject;

namespace vpe {
class CPlane;
class CPrimitiveRenderable;
class CSection;
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
    // the bounds and makes the renderables; none when nothing is left.
    void Make(const KVXElementObject& element, const vpe::CSection& section, const vpe::CPlane& plane,
              const std::vector<KVXAnimPlane>& bounds, vpe::CStateSet* faceState, vpe::CStateSet* edgeState);
    // Moves the cap onto the points of a section with the same loops (one
    // loop after the other); false when this cap cannot follow (it was
    // clipped to bounds, or the points do not match its section).
    bool Move(const std::vector<osg::Vec3f>& points);
    void Clear();

    vpe::CPrimitiveRenderable* Faces() const { return m_faces.get(); }
    vpe::CPrimitiveRenderable* Edges() const { return m_edges.get(); }

private:
    static std::vector<osg::Vec3f> pointsOf(const vpe::CSection& section);
    // Where each vertex is among the points; false when one is not.
    static bool traceBack(const std::vector<osg::Vec3f>& vertices, const std::vector<osg::Vec3f>& points,
                          std::vector<std::uint32_t>& sources);
    static void moveArray(vpe::CPrimitiveRenderable* renderable, const std::vector<std::uint32_t>& sources,
                          const std::vector<osg::Vec3f>& points);

    vpe::CRefPtr<vpe::CPrimitiveRenderable> m_faces;
    vpe::CRefPtr<vpe::CPrimitiveRenderable> m_edges;
    std::vector<std::uint32_t> m_faceSources;
    std::vector<std::uint32_t> m_edgeSources;
    std::size_t m_pointCount = 0;
    bool m_movable = false;
};
