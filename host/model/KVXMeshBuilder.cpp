#include "KVXMeshBuilder.h"

#include <utility>

void KVXMeshBuilder::AddBody(const vpe::CBody& body, const osg::Matrixd& placement)
{
    const auto base = static_cast<std::uint32_t>(m_vertices.size());
    for (const osg::Vec3d& v : body.GetVertices())
        m_vertices.push_back(v * placement);
    for (const vpe::CBody::Triangle& t : body.GetTriangles())
        m_triangles.push_back({t[0] + base, t[1] + base, t[2] + base});
}

void KVXMeshBuilder::AddBox(const osg::Vec3d& min, const osg::Vec3d& max)
{
    vpe::CRefPtr<vpe::CBody> box = vpe::CBody::CreateBox(min, max);
    if (box)
        AddBody(*box);
}

void KVXMeshBuilder::AddBar(const osg::Vec3d& from, const osg::Vec3d& to, double width)
{
    const osg::Vec3d axis = to - from;
    const double length = axis.length();
    if (length <= 0.0)
        return;
    const double half = width * 0.5;
    vpe::CRefPtr<vpe::CBody> bar = vpe::CBody::CreateBox({-half, -half, 0.0}, {half, half, length});
    // A rotation (no mirroring) keeps the box wound outwards.
    const osg::Matrixd placement =
        osg::Matrixd::rotate(osg::Vec3d(0.0, 0.0, 1.0), axis) * osg::Matrixd::translate(from);
    AddBody(*bar, placement);
}

vpe::CBody* KVXMeshBuilder::Take()
{
    auto* body = new vpe::CBody(std::move(m_vertices), std::move(m_triangles));
    m_vertices.clear();
    m_triangles.clear();
    return body;
}
