#include "CStateSet.h"

#include "CScene.h"

#include <osg/BlendFunc>
#include <osg/ClipPlane>
#include <osg/ColorMask>
#include <osg/CullFace>
#include <osg/Depth>
#include <osg/LightModel>
#include <osg/LineWidth>
#include <osg/Material>
#include <osg/PolygonOffset>
#include <osg/Uniform>

namespace vpe {

namespace {

osg::Vec4 rgba(const QColor& color)
{
    return osg::Vec4(color.redF(), color.greenF(), color.blueF(), color.alphaF());
}

osg::Material* material(osg::StateSet& state)
{
    auto* existing = static_cast<osg::Material*>(state.getAttribute(osg::StateAttribute::MATERIAL));
    if (existing)
        return existing;
    auto* created = new osg::Material;
    created->setColorMode(osg::Material::OFF);
    state.setAttributeAndModes(created, osg::StateAttribute::ON);
    return created;
}

osg::Depth* depth(osg::StateSet& state)
{
    auto* existing = static_cast<osg::Depth*>(state.getAttribute(osg::StateAttribute::DEPTH));
    if (existing)
        return existing;
    auto* created = new osg::Depth;
    state.setAttribute(created);
    return created;
}

} // namespace

CStateSet::CStateSet(const osg::StateSet& other, const osg::CopyOp& copy) : osg::StateSet(other, copy)
{
    if (const auto* state = dynamic_cast<const CStateSet*>(&other))
        m_drawingMask = state->m_drawingMask;
}

CStateSet* CStateSet::Clone() const { return new CStateSet(*this, osg::CopyOp::DEEP_COPY_STATEATTRIBUTES); }

void CStateSet::SetDiffuseColor(const QColor& color)
{
    material(*this)->setDiffuse(osg::Material::FRONT_AND_BACK, rgba(color));
}

void CStateSet::SetAmbientColor(const QColor& color)
{
    material(*this)->setAmbient(osg::Material::FRONT_AND_BACK, rgba(color));
}

void CStateSet::SetSceneBlending(int mode)
{
    if (mode != AlphaBlending)
        return;
    setAttributeAndModes(new osg::BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA), osg::StateAttribute::ON);
    if (getRenderingHint() != TRANSPARENT_BIN && getBinNumber() == 0)
        setRenderingHint(TRANSPARENT_BIN);
}

void CStateSet::SetDepthTestEnabled(bool enabled)
{
    setMode(GL_DEPTH_TEST, enabled ? osg::StateAttribute::ON : osg::StateAttribute::OFF);
}

void CStateSet::SetDepthWriteEnabled(bool enabled) { depth(*this)->setWriteMask(enabled); }

void CStateSet::SetTwoSidedLighting(bool enabled)
{
    auto* model = new osg::LightModel;
    model->setTwoSided(enabled);
    // Materials carry their full colour as ambient: the scene's ambient
    // light is weighed so that shadowed faces keep their hue, not white.
    model->setAmbientIntensity(osg::Vec4(0.344f, 0.344f, 0.356f, 1.0f));
    setAttributeAndModes(model, osg::StateAttribute::ON);
}

void CStateSet::SetFaceMode(int mode)
{
    if (mode == BothFaces) {
        setMode(GL_CULL_FACE, osg::StateAttribute::OFF);
        return;
    }
    setAttributeAndModes(new osg::CullFace(mode == FrontFaces ? osg::CullFace::BACK : osg::CullFace::FRONT),
                         osg::StateAttribute::ON);
}

void CStateSet::SetPolygonOffset(float factor, float units)
{
    setAttributeAndModes(new osg::PolygonOffset(factor, units), osg::StateAttribute::ON);
}

void CStateSet::SetLineSmooth(bool enabled)
{
    setMode(GL_LINE_SMOOTH, enabled ? osg::StateAttribute::ON : osg::StateAttribute::OFF);
}

void CStateSet::SetLineWidth(float width) { setAttributeAndModes(new osg::LineWidth(width), osg::StateAttribute::ON); }

void CStateSet::SetLightingEnabled(bool enabled)
{
    setMode(GL_LIGHTING, enabled ? osg::StateAttribute::ON : osg::StateAttribute::OFF);
    // The same for the scene's shaders, which have no lighting mode to read.
    addUniform(new osg::Uniform(CScene::kLightingUniform, enabled));
}

void CStateSet::SetDrawingPriority(int priority)
{
    setRenderBinDetails(priority, getRenderingHint() == TRANSPARENT_BIN ? "DepthSortedBin" : "RenderBin");
}

int CStateSet::GetDrawingPriority() const { return getBinNumber(); }

void CStateSet::SetDrawingMask(unsigned int mask)
{
    m_drawingMask = mask;
    if ((mask & 0xfu) == 0xfu) {
        removeAttribute(osg::StateAttribute::COLORMASK);
        return;
    }
    setAttribute(new osg::ColorMask(mask & 0x1u, mask & 0x2u, mask & 0x4u, mask & 0x8u));
}

void CStateSet::AddClipPlane(int index, const osg::Vec4d& equation)
{
    if (index < 0 || index >= kMaxClipPlanes)
        return;
    // A plane this set alone holds is moved where it is: a sweeping cut sets
    // its plane every frame, and replacing the attribute each time (a new
    // object, the set's maps and parent lists redone) was a large share of a
    // playing frame with thousands of cuts.
    auto* existing =
        static_cast<osg::ClipPlane*>(getAttribute(osg::StateAttribute::CLIPPLANE, static_cast<unsigned int>(index)));
    if (existing && existing->referenceCount() == 1) {
        existing->setClipPlane(equation);
        return;
    }
    setAttributeAndModes(new osg::ClipPlane(static_cast<unsigned int>(index), equation), osg::StateAttribute::ON);
}

void CStateSet::RemoveClipPlane(int index)
{
    if (index < 0 || index >= kMaxClipPlanes)
        return;
    removeAttribute(osg::StateAttribute::CLIPPLANE, static_cast<unsigned int>(index));
    removeMode(static_cast<GLenum>(GL_CLIP_PLANE0 + index));
}

bool CStateSet::HasClipPlane(int index) const
{
    return index >= 0 && index < kMaxClipPlanes &&
           getAttribute(osg::StateAttribute::CLIPPLANE, static_cast<unsigned int>(index)) != nullptr;
}

osg::Vec4d CStateSet::GetClipPlane(int index) const
{
    const auto* plane = HasClipPlane(index) ? static_cast<const osg::ClipPlane*>(getAttribute(
                                                  osg::StateAttribute::CLIPPLANE, static_cast<unsigned int>(index)))
                                            : nullptr;
    return plane ? plane->getClipPlane() : osg::Vec4d();
}

void CStateSet::SetClipPlanesDisabled(bool disabled)
{
    // Protected: a parent's override cannot switch the planes back on.
    for (int i = 0; i < kMaxClipPlanes; ++i) {
        const GLenum mode = static_cast<GLenum>(GL_CLIP_PLANE0 + i);
        if (disabled)
            setMode(mode, osg::StateAttribute::OFF | osg::StateAttribute::PROTECTED);
        else
            removeMode(mode);
    }
}

} // namespace vpe

namespace vpe {

void CStateSet::SetOverriding()
{
    for (auto& mode : getModeList()) {
        if (!(mode.second & osg::StateAttribute::PROTECTED))
            mode.second |= osg::StateAttribute::OVERRIDE;
    }
    for (auto& attribute : getAttributeList())
        attribute.second.second |= osg::StateAttribute::OVERRIDE;
}

} // namespace vpe
