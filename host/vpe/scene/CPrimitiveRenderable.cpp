#include "CPrimitiveRenderable.h"

namespace vpe {

namespace {
GLenum glMode(CPrimitiveRenderable::PrimitiveType type)
{
    switch (type) {
    case CPrimitiveRenderable::Points: return GL_POINTS;
    case CPrimitiveRenderable::LineStrip: return GL_LINE_STRIP;
    case CPrimitiveRenderable::Lines: return GL_LINES;
    case CPrimitiveRenderable::LineLoop: return GL_LINE_LOOP;
    case CPrimitiveRenderable::TriangleStrip: return GL_TRIANGLE_STRIP;
    case CPrimitiveRenderable::Triangles: return GL_TRIANGLES;
    }
    return GL_TRIANGLES;
}
} // namespace

CPrimitiveRenderable::CPrimitiveRenderable(bool dynamic)
{
    setUseDisplayList(false);
    setUseVertexBufferObjects(true);
    setDataVariance(dynamic ? osg::Object::DYNAMIC : osg::Object::STATIC);
}

void CPrimitiveRenderable::SetPrimitives(PrimitiveType type, const std::vector<osg::Vec3f>& vertices,
                                         const std::vector<osg::Vec3f>& normals)
{
    m_type = type;
    setVertexArray(new osg::Vec3Array(vertices.begin(), vertices.end()));
    if (normals.size() == vertices.size() && !normals.empty())
        setNormalArray(new osg::Vec3Array(normals.begin(), normals.end()), osg::Array::BIND_PER_VERTEX);
    else
        setNormalArray(nullptr);
    removePrimitiveSet(0, getNumPrimitiveSets());
    addPrimitiveSet(new osg::DrawArrays(glMode(type), 0, static_cast<GLsizei>(vertices.size())));
    dirtyBound();
}

} // namespace vpe
