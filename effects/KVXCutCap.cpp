#include "KVXCutCap.h"

#include "host/model/KVX3DElementObject.h"
#include "host/vpe/geometry/CBody.h"
#include "host/vpe/geometry/CBodySlicer.h"
#include "host/vpe/geometry/CBooleanOperate.h"
#include "host/vpe/geometry/CPlane.h"
#include "host/vpe/geometry/CSection.h"
#include "host/vpe/scene/CPrimitiveRenderable.h"
#include "host/vpe/scene/CStateSetManager.h"

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
        m_slicer = nullptr;
        m_geometry.Clear();
        m_planeValid = false;
    }
    if (colour != m_colour || !m_faceState) {
        makeStateSets(*element, colour);
        m_geometry.Clear();
        m_planeValid = false;
    }
    if (m_planeValid && plane == m_plane && bounds == m_bounds)
        return false;
    const bool hadCap = hasCap();
    m_plane = plane;
    m_bounds = bounds;
    m_planeValid = true;
    if (misses(plane))
        m_geometry.Clear();
    else
        build(*element, *body, plane);
    return hadCap || hasCap();
}

bool KVXCutCap::Clear()
{
    m_planeValid = false;
    const bool hadCap = hasCap();
    m_geometry.Clear();
    return hadCap;
}

void KVXCutCap::AppendTo(std::vector<osg::Drawable*>& drawables) const
{
    if (m_geometry.Faces())
        drawables.push_back(m_geometry.Faces());
    if (m_geometry.Edges())
        drawables.push_back(m_geometry.Edges());
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
    const vpe::CPlane cut(plane.point, plane.normal);
    const auto* drawn = KVXElementObject::Cast(&element);
    if (!cut.IsValid() || !drawn) {
        m_geometry.Clear();
        return;
    }
    if (!m_slicer || m_slicer->GetNormal() != cut.GetNormal())
        m_slicer = new vpe::CBodySlicer(body, cut.GetNormal());
    // Most frames only slide the plane between two vertex levels.
    if (!m_geometry.UsedPoints().empty() && m_slicer->Slide(plane.point, m_geometry.UsedPoints(), m_points) &&
        m_geometry.Move(m_points)) {
        ++m_moves;
        return;
    }
    vpe::CSection section;
    bool sameLoops = false;
    // Only a cap made from the slicer's own loops can follow them.
    bool movable = false;
    switch (m_slicer->Slice(plane.point, section, sameLoops)) {
    case vpe::CBodySlicer::Missed:
        m_geometry.Clear();
        return;
    case vpe::CBodySlicer::Sliced:
        movable = true;
        break;
    case vpe::CBodySlicer::Degenerate: {
        // Through a vertex: the general split knows what to do. Only the
        // section is drawn, so the parts are not made.
        vpe::CRefPtr<vpe::CBody> positive;
        vpe::CRefPtr<vpe::CBody> negative;
        const vpe::CBooleanOperate operate(false, false, true, false);
        if (!operate.SplitBody(body, cut, positive, negative, section) || section.IsEmpty()) {
            m_geometry.Clear();
            return;
        }
        break;
    }
    }
    // Across a vertex level an outline often keeps its shape: the cap
    // follows it instead of being covered and tessellated again.
    if (movable && m_geometry.Follow(section, plane.normal)) {
        ++m_moves;
        return;
    }
    ++m_builds;
    m_geometry.Make(*drawn, section, cut, m_bounds, movable, m_faceState.get(), m_edgeState.get());
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
