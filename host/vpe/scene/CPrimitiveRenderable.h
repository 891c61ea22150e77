#pragma once

#include <osg/Geometry>

#include <vector>

namespace vpe {

// Geometry drawn as one kind of primitive from a vertex array, with normals
// for lit faces.
class CPrimitiveRenderable : public osg::Geometry {
public:
    enum PrimitiveType { Points = 0, LineStrip = 1, Lines = 2, LineLoop = 3, TriangleStrip = 4, Triangles = 5 };

    // With dynamic true the arrays are expected to change from frame to
    // frame and are drawn without display lists.
    explicit CPrimitiveRenderable(bool dynamic = false);

    void SetPrimitives(PrimitiveType type, const std::vector<osg::Vec3f>& vertices,
                       const std::vector<osg::Vec3f>& normals = {});
    PrimitiveType GetPrimitiveType() const { return m_type; }

protected:
    ~CPrimitiveRenderable() override = default;

private:
    PrimitiveType m_type = Triangles;
};

} // namespace vpe
