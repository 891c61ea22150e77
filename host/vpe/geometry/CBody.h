#pragma once

#include "host/vpe/core/CReferenced.h"

#include <osg/BoundingBox>
#include <osg/Matrixd>
#include <osg/Vec2d>
#include <osg/Vec3d>

#include <array>
#include <cstdint>
#include <vector>

namespace vpe {

// A closed triangle mesh in model units (millimetres): shared vertices and
// triangles wound counter-clockwise seen from outside. Elements keep their
// solids as bodies; sections and caps are cut from them.
class CBody : public CReferenced {
public:
    using Triangle = std::array<std::uint32_t, 3>;

    CBody() = default;
    CBody(std::vector<osg::Vec3d> vertices, std::vector<Triangle> triangles);

    // An axis-aligned box between two corners.
    static CBody* CreateBox(const osg::Vec3d& min, const osg::Vec3d& max);
    // A prism: the outline (a simple polygon in XY, either winding) from
    // bottom to top. Null when the outline has fewer than three corners or
    // no area.
    static CBody* CreateExtrusion(const std::vector<osg::Vec2d>& outline, double bottom, double top);

    const std::vector<osg::Vec3d>& GetVertices() const { return m_vertices; }
    const std::vector<Triangle>& GetTriangles() const { return m_triangles; }
    bool IsEmpty() const { return m_triangles.empty(); }
    osg::BoundingBoxd GetBoundingBox() const;
    // Positive for a closed, outward-wound mesh.
    double GetVolume() const;
    // Every edge used by exactly two triangles, once in each direction.
    bool IsClosed() const;
    // A copy moved by the matrix.
    CBody* Transformed(const osg::Matrixd& matrix) const;

    // Ear-clipping triangulation of a simple polygon (either winding);
    // answers index triples into the outline, counter-clockwise.
    static std::vector<Triangle> TriangulatePolygon(const std::vector<osg::Vec2d>& outline);

protected:
    ~CBody() override = default;

private:
    std::vector<osg::Vec3d> m_vertices;
    std::vector<Triangle> m_triangles;
};

} // namespace vpe
