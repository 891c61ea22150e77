#include "KVXDrawHelper.h"

#include "host/vpe/scene/CNodeVisitor.h"
#include "host/vpe/scene/CPrimitiveRenderable.h"
#include "host/vpe/scene/CStateSetManager.h"

#include <cmath>
#include <map>
#include <utility>

namespace {

osg::Vec3f faceNormal(const vpe::CBody& body, const vpe::CBody::Triangle& t)
{
    const auto& v = body.GetVertices();
    osg::Vec3d n = (v[t[1]] - v[t[0]]) ^ (v[t[2]] - v[t[0]]);
    n.normalize();
    return osg::Vec3f(n);
}

class StateSetSetter : public vpe::CNodeVisitor {
public:
    explicit StateSetSetter(osg::StateSet* state) : m_state(state) {}

protected:
    void VisitVisualNode(vpe::CVisualNode& node) override
    {
        for (unsigned int i = 0; i < node.getNumDrawables(); ++i)
            node.getDrawable(i)->setStateSet(m_state);
    }

private:
    osg::ref_ptr<osg::StateSet> m_state;
};

} // namespace

void KVXDrawHelper::TessellateShell(const vpe::CBody& shell, std::vector<osg::Vec3f>& triangleVertices,
                                    std::vector<osg::Vec3f>& triangleNormals, std::vector<osg::Vec3f>& edgeVertices,
                                    double featureAngle)
{
    const auto& vertices = shell.GetVertices();
    const auto& triangles = shell.GetTriangles();
    std::vector<osg::Vec3f> normals;
    normals.reserve(triangles.size());
    // Faces around each undirected edge.
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::vector<std::size_t>> faces;
    for (std::size_t f = 0; f < triangles.size(); ++f) {
        const vpe::CBody::Triangle& t = triangles[f];
        normals.push_back(faceNormal(shell, t));
        for (int k = 0; k < 3; ++k) {
            triangleVertices.push_back(osg::Vec3f(vertices[t[k]]));
            triangleNormals.push_back(normals.back());
            const std::uint32_t a = t[k], b = t[(k + 1) % 3];
            faces[{std::min(a, b), std::max(a, b)}].push_back(f);
        }
    }
    const double limit = std::cos(featureAngle * M_PI / 180.0);
    for (const auto& edge : faces) {
        const auto& around = edge.second;
        const bool feature = around.size() != 2 || normals[around[0]] * normals[around[1]] < limit;
        if (!feature)
            continue;
        edgeVertices.push_back(osg::Vec3f(vertices[edge.first.first]));
        edgeVertices.push_back(osg::Vec3f(vertices[edge.first.second]));
    }
}

QColor KVXDrawHelper::EdgeColor(const QColor& color)
{
    QColor edge = color.darker(220);
    edge.setAlpha(color.alpha());
    return edge;
}

vpe::CStateSet* KVXDrawHelper::FaceStateSet(const QColor& color)
{
    osg::ref_ptr<vpe::CStateSet> state = new vpe::CStateSet;
    // Ambient and diffuse alike, as every other face in the scene (caps,
    // emphasis) is lit: the scene's ambient light is weighed for that.
    state->SetDiffuseColor(color);
    state->SetAmbientColor(color);
    state->SetFaceMode(vpe::CStateSet::BothFaces);
    state->SetTwoSidedLighting(true);
    // Edges drawn on the faces must win the depth test.
    state->SetPolygonOffset(1.0f, 1.0f);
    if (color.alpha() < 255) {
        state->SetSceneBlending(vpe::CStateSet::AlphaBlending);
        state->SetDepthWriteEnabled(false);
    }
    return vpe::CStateSetManager::GetInstance()->GetSharedStateSet(state.get());
}

vpe::CStateSet* KVXDrawHelper::EdgeStateSet(const QColor& color)
{
    osg::ref_ptr<vpe::CStateSet> state = new vpe::CStateSet;
    const QColor edge = EdgeColor(color);
    state->SetDiffuseColor(edge);
    state->SetAmbientColor(edge);
    state->SetLightingEnabled(false);
    state->SetLineSmooth(true);
    state->SetSceneBlending(vpe::CStateSet::AlphaBlending);
    return vpe::CStateSetManager::GetInstance()->GetSharedStateSet(state.get());
}

osg::Node* KVXDrawHelper::CreateBodyNode(const vpe::CBody& body, const QColor& color)
{
    std::vector<osg::Vec3f> vertices, normals, edges;
    TessellateShell(body, vertices, normals, edges);
    osg::ref_ptr<vpe::CVisualNode> node = new vpe::CVisualNode;
    osg::ref_ptr<vpe::CPrimitiveRenderable> faces = new vpe::CPrimitiveRenderable;
    faces->SetPrimitives(vpe::CPrimitiveRenderable::Triangles, vertices, normals);
    faces->setStateSet(FaceStateSet(color));
    node->addDrawable(faces);
    if (!edges.empty()) {
        osg::ref_ptr<vpe::CPrimitiveRenderable> lines = new vpe::CPrimitiveRenderable;
        lines->SetPrimitives(vpe::CPrimitiveRenderable::Lines, edges);
        lines->setStateSet(EdgeStateSet(color));
        node->addDrawable(lines);
    }
    return node.release();
}

void KVXDrawHelper::SetNodeStateSet(osg::Node* node, osg::StateSet* stateSet)
{
    if (!node)
        return;
    StateSetSetter setter(stateSet);
    node->accept(setter);
}
