#include "KVXCutCap.h"

#include "host/model/KVX3DElementObject.h"
#include "host/model/PfOptionContainer.h"
#include "host/vpe/CBody.h"
#include "host/vpe/CBooleanOperate.h"
#include "host/vpe/CPlane.h"
#include "host/vpe/CPrimitiveRenderable.h"
#include "host/vpe/CSection.h"
#include "host/vpe/CStateSetManager.h"
#include "host/vpe/GBodyBuilder.h"

KVXCutCap::KVXCutCap() = default;

KVXCutCap::~KVXCutCap() = default;

vpe::CBody* KVXCutCap::bodyOf(PfDbElement* element)
{
    vpe::CBody* body = element->GetFirstBody();
    if (body)
        return body;
    if (auto* drawn = KVXElementObject::Cast(element)) {
        drawn->regenerate();
        body = element->GetFirstBody();
    }
    return body;
}

QColor KVXCutCap::colourOf(const PfDbElement* element)
{
    // A solid element's cap is as see-through as the element.
    if (const auto* solid = KVX3DElementObject::Cast(element))
        return solid->GetDrawColor();
    return element->EntityColor();
}

bool KVXCutCap::Update(PfDbElement* element, const KVXAnimPlane& plane, const std::vector<KVXAnimPlane>& bounds)
{
    vpe::CBody* body = element ? bodyOf(element) : nullptr;
    if (!body)
        return Clear();
    const QColor colour = colourOf(element);
    if (body != m_body.get()) {
        m_body = body;
        m_bodyBox = body->GetBoundingBox();
        m_planeValid = false;
    }
    if (colour != m_colour || !m_faceState) {
        makeStateSets(*element, colour);
        m_planeValid = false;
    }
    if (m_planeValid && plane == m_plane && bounds == m_bounds)
        return false;
    const bool hadCap = m_faces || m_edges;
    m_plane = plane;
    m_bounds = bounds;
    m_planeValid = true;
    m_faces = nullptr;
    m_edges = nullptr;
    if (!misses(plane))
        build(*element, *body, plane);
    return hadCap || m_faces || m_edges;
}

bool KVXCutCap::Clear()
{
    m_planeValid = false;
    const bool hadCap = m_faces || m_edges;
    m_faces = nullptr;
    m_edges = nullptr;
    return hadCap;
}

void KVXCutCap::AddTo(vpe::CVisualNode& holder) const
{
    if (m_faces)
        holder.addDrawable(m_faces.get());
    if (m_edges)
        holder.addDrawable(m_edges.get());
}

bool KVXCutCap::misses(const KVXAnimPlane& plane) const
{
    if (!m_bodyBox.valid())
        return true;
    bool above = false;
    bool below = false;
    for (unsigned int corner = 0; corner < 8; ++corner) {
        const double side = (m_bodyBox.corner(corner) - plane.point) * plane.normal;
        above = above || side > 0.0;
        below = below || side < 0.0;
    }
    return !(above && below);
}

void KVXCutCap::build(const PfDbElement& element, const vpe::CBody& body, const KVXAnimPlane& plane)
{
    ++m_builds;
    const vpe::CPlane cut(plane.point, plane.normal);
    // Only the section is drawn: the parts are not made.
    const vpe::CBooleanOperate operate(false, false, true, false);
    vpe::CRefPtr<vpe::CBody> positive;
    vpe::CRefPtr<vpe::CBody> negative;
    vpe::CSection section;
    if (!operate.SplitBody(body, cut, positive, negative, section) || section.IsEmpty())
        return;
    const vpe::CRefPtr<vpe::CBody> shell = vpe::GBodyBuilder::CreateShell(section, cut, true, false);
    const auto* drawn = KVXElementObject::Cast(&element);
    if (!shell || !drawn)
        return;
    std::vector<osg::Vec3f> vertices;
    std::vector<osg::Vec3f> normals;
    std::vector<osg::Vec3f> edges;
    const PfOptionContainer* options = PfOptionContainer::GetInstance();
    drawn->tessellateShell(*shell, options->GetDistEpsilonCoefficient(), options->GetAngleEpsilonCoefficient(),
                           vertices, normals, edges);
    for (const KVXAnimPlane& bound : m_bounds) {
        clipTriangles(vertices, normals, bound);
        clipSegments(edges, bound);
    }
    if (vertices.empty())
        return;
    m_faces = new vpe::CPrimitiveRenderable(false);
    m_faces->SetPrimitives(vpe::CPrimitiveRenderable::Triangles, vertices, normals);
    m_faces->setStateSet(m_faceState.get());
    if (!edges.empty()) {
        m_edges = new vpe::CPrimitiveRenderable(false);
        m_edges->SetPrimitives(vpe::CPrimitiveRenderable::Lines, edges);
        m_edges->setStateSet(m_edgeState.get());
    }
}

namespace {

double sideOf(const osg::Vec3f& point, const KVXAnimPlane& bound)
{
    return (osg::Vec3d(point) - bound.point) * bound.normal;
}

osg::Vec3f crossing(const osg::Vec3f& a, double da, const osg::Vec3f& b, double db)
{
    return a + (b - a) * static_cast<float>(da / (da - db));
}

} // namespace

void KVXCutCap::clipTriangles(std::vector<osg::Vec3f>& vertices, std::vector<osg::Vec3f>& normals,
                              const KVXAnimPlane& bound)
{
    std::vector<osg::Vec3f> keptVertices;
    std::vector<osg::Vec3f> keptNormals;
    std::vector<osg::Vec3f> polygon;
    for (std::size_t i = 0; i + 2 < vertices.size(); i += 3) {
        // The triangle's part on the kept side, a convex polygon made into a
        // fan.
        polygon.clear();
        for (std::size_t k = 0; k < 3; ++k) {
            const osg::Vec3f& a = vertices[i + k];
            const osg::Vec3f& b = vertices[i + (k + 1) % 3];
            const double da = sideOf(a, bound);
            const double db = sideOf(b, bound);
            if (da >= 0.0)
                polygon.push_back(a);
            if ((da >= 0.0) != (db >= 0.0))
                polygon.push_back(crossing(a, da, b, db));
        }
        for (std::size_t k = 1; k + 1 < polygon.size(); ++k) {
            keptVertices.insert(keptVertices.end(), {polygon[0], polygon[k], polygon[k + 1]});
            keptNormals.insert(keptNormals.end(), 3, normals[i]);
        }
    }
    vertices.swap(keptVertices);
    normals.swap(keptNormals);
}

void KVXCutCap::clipSegments(std::vector<osg::Vec3f>& vertices, const KVXAnimPlane& bound)
{
    std::vector<osg::Vec3f> kept;
    for (std::size_t i = 0; i + 1 < vertices.size(); i += 2) {
        osg::Vec3f a = vertices[i];
        osg::Vec3f b = vertices[i + 1];
        const double da = sideOf(a, bound);
        const double db = sideOf(b, bound);
        if (da < 0.0 && db < 0.0)
            continue;
        if (da < 0.0)
            a = crossing(a, da, b, db);
        else if (db < 0.0)
            b = crossing(a, da, b, db);
        kept.insert(kept.end(), {a, b});
    }
    vertices.swap(kept);
}

void KVXCutCap::makeStateSets(const PfDbElement& element, const QColor& colour)
{
    m_colour = colour;
    vpe::CRefPtr<vpe::CStateSet> faces = new vpe::CStateSet;
    faces->SetDiffuseColor(colour);
    faces->SetAmbientColor(colour);
    if (colour.alpha() != 255) {
        faces->SetSceneBlending(vpe::CStateSet::AlphaBlending);
        faces->SetDepthWriteEnabled(false);
        faces->SetDepthTestEnabled(true);
    }
    faces->SetTwoSidedLighting(true);
    faces->SetFaceMode(vpe::CStateSet::BothFaces);
    faces->SetPolygonOffset(element.GetPolygonOffsetFactor(), element.GetPolygonOffsetUnits());
    faces->SetClipPlanesDisabled(true);
    vpe::CStateSetManager* shared = vpe::CStateSetManager::GetInstance();
    m_faceState = shared->GetSharedStateSet(faces.get());

    vpe::CRefPtr<vpe::CStateSet> edges = new vpe::CStateSet;
    edges->SetDiffuseColor(element.EntityColor());
    edges->SetLineWidth(1.0f);
    edges->SetLightingEnabled(false);
    edges->SetSceneBlending(vpe::CStateSet::AlphaBlending);
    edges->SetLineSmooth(true);
    edges->SetClipPlanesDisabled(true);
    m_edgeState = shared->GetSharedStateSet(edges.get());
}
