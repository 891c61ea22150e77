#pragma once

#include "CBody.h"

#include <osg/Vec2d>

#include <vector>

namespace vpe {

class CPlane;
class CSection;

// Builds bodies out of planar regions bounded by loops: the shell that covers
// a section, and prisms over outlines with holes.
//
// Regions are triangulated without new points: each hole is joined to the
// outer loop around it by a bridge to a vertex it can see, and the joined
// ring is ear clipped. Because every loop edge ends up in exactly one
// triangle, the triangles close a mesh along those loops.
class GBodyBuilder {
public:
    // An open planar shell over the section, null for an empty section or an
    // invalid plane. alongNormal: its triangles face along the plane's normal
    // (otherwise against it). twoSided: each triangle is added a second time
    // with the opposite winding, so that it faces both ways. Slivers of no
    // area are left out.
    static CBody* CreateShell(const CSection& section, const CPlane& plane, bool alongNormal, bool twoSided);

    // A prism: the outline with its holes (simple polygons in XY, either
    // winding, holes inside the outline) from bottom to top. Null when the
    // outline has fewer than three corners or no area, or the height is not
    // positive.
    static CBody* CreateExtrusion(const std::vector<osg::Vec2d>& outline,
                                  const std::vector<std::vector<osg::Vec2d>>& holes, double bottom, double top);

    // Triangles over loops given as in a section: outer loops counter-clockwise,
    // holes clockwise, each hole inside an outer loop (the smallest one that
    // contains it is taken). Indices run over the loops' points one loop
    // after the other; triangles are counter-clockwise and keep each loop
    // edge in its own direction.
    static std::vector<CBody::Triangle> TriangulateLoops(const std::vector<std::vector<osg::Vec2d>>& loops);
};

} // namespace vpe
