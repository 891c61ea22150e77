#include "DirectionalShadowMap.h"

#include <osg/ComputeBoundsVisitor>
#include <osg/Depth>
#include <osg/PolygonOffset>
#include <osg/Program>
#include <osgShadow/ShadowedScene>
#include <osgUtil/CullVisitor>

#include <cmath>

namespace vpe {

namespace {

class CastersCullCallback : public osg::NodeCallback {
public:
    explicit CastersCullCallback(DirectionalShadowMap* map) : m_map(map) {}

    void operator()(osg::Node*, osg::NodeVisitor* nv) override
    {
        osg::ref_ptr<DirectionalShadowMap> map;
        osgUtil::CullVisitor* cv = nv->asCullVisitor();
        if (cv && m_map.lock(map))
            map->CullCasters(*cv);
    }

private:
    osg::observer_ptr<DirectionalShadowMap> m_map;
};

// Depth only, by the fixed pipeline: the scene's lighting program would read
// the very map being drawn. Whatever casts a shadow writes its depth, even
// an overlay drawn without depth test in the view.
osg::StateSet* castingState()
{
    constexpr unsigned int kForced = osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE;
    auto* state = new osg::StateSet;
    state->setAttribute(new osg::Program, osg::StateAttribute::OVERRIDE);
    state->setAttribute(new osg::Depth(osg::Depth::LESS, 0.0, 1.0, true), osg::StateAttribute::OVERRIDE);
    // Pushes the depths back a little so that lit faces do not shadow
    // themselves in stripes.
    state->setAttributeAndModes(new osg::PolygonOffset(2.0f, 4.0f), kForced);
    state->setMode(GL_DEPTH_TEST, kForced);
    state->setMode(GL_LIGHTING, osg::StateAttribute::OFF | osg::StateAttribute::OVERRIDE);
    state->setMode(GL_BLEND, osg::StateAttribute::OFF | osg::StateAttribute::OVERRIDE);
    state->setMode(GL_CULL_FACE, osg::StateAttribute::OFF | osg::StateAttribute::OVERRIDE);
    return state;
}

} // namespace

DirectionalShadowMap::DirectionalShadowMap(CLight* light) : m_light(light) {}

DirectionalShadowMap::DirectionalShadowMap(const DirectionalShadowMap& other, const osg::CopyOp& copy)
    : osgShadow::ShadowTechnique(other, copy), m_light(other.m_light)
{
}

void DirectionalShadowMap::init()
{
    if (!_shadowedScene)
        return;
    const osgShadow::ShadowSettings* settings = _shadowedScene->getShadowSettings();
    const osg::Vec2s size = settings->getTextureSize();
    m_texture = new osg::Texture2D;
    m_texture->setTextureSize(size.x(), size.y());
    m_texture->setInternalFormat(GL_DEPTH_COMPONENT24);
    m_texture->setSourceFormat(GL_DEPTH_COMPONENT);
    m_texture->setSourceType(GL_UNSIGNED_INT);
    m_texture->setShadowComparison(true);
    m_texture->setShadowCompareFunc(osg::Texture::LEQUAL);
    m_texture->setShadowTextureMode(osg::Texture::LUMINANCE);
    // Linear filtering of a compared map blends the four nearest results:
    // softer shadow edges for free.
    m_texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    m_texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    // Beyond the casters' extent nothing is in shadow.
    m_texture->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_BORDER);
    m_texture->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_BORDER);
    m_texture->setBorderColor(osg::Vec4d(1.0, 1.0, 1.0, 1.0));

    m_camera = new osg::Camera;
    // First: the camera keeps its viewport in its state set.
    m_camera->setStateSet(castingState());
    m_camera->setReferenceFrame(osg::Camera::ABSOLUTE_RF);
    m_camera->setRenderOrder(osg::Camera::PRE_RENDER);
    m_camera->setRenderTargetImplementation(osg::Camera::FRAME_BUFFER_OBJECT);
    m_camera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
    m_camera->setCullingMode(m_camera->getCullingMode() & ~osg::CullSettings::SMALL_FEATURE_CULLING);
    m_camera->setClearMask(GL_DEPTH_BUFFER_BIT);
    m_camera->setViewport(0, 0, size.x(), size.y());
    m_camera->attach(osg::Camera::DEPTH_BUFFER, m_texture.get());
    m_camera->setCullCallback(new CastersCullCallback(this));

    const unsigned int unit = settings->getBaseShadowTextureUnit();
    m_receiving = new osg::StateSet;
    m_receiving->setTextureAttributeAndModes(unit, m_texture.get(), osg::StateAttribute::ON);
    m_eyeToMap = new osg::Uniform(osg::Uniform::FLOAT_MAT4, "vpe_shadowMatrix");
    m_eyeToMap->setDataVariance(osg::Object::DYNAMIC);
    m_receiving->addUniform(m_eyeToMap.get());
    m_drawn = false;
    _dirty = false;
}

void DirectionalShadowMap::update(osg::NodeVisitor& nv) { _shadowedScene->osg::Group::traverse(nv); }

bool DirectionalShadowMap::needsDrawing(const CLight& light) const
{
    osg::Vec3d direction = light.GetDirection();
    direction.normalize();
    return !m_drawn || light.IsShadowDirty() || direction != m_direction || _shadowedScene->getBound() != m_bound;
}

void DirectionalShadowMap::fitToCasters(const osg::Vec3d& direction)
{
    osg::ComputeBoundsVisitor bounds;
    bounds.setTraversalMask(_shadowedScene->getShadowSettings()->getCastsShadowTraversalMask());
    _shadowedScene->osg::Group::traverse(bounds);
    osg::BoundingBox box = bounds.getBoundingBox();
    if (!box.valid())
        box.expandBy(osg::Vec3(0.0f, 0.0f, 0.0f));
    // The light looks along its direction at the casters' centre; the map
    // is the casters' box seen that way, a little larger so that the
    // outermost faces stay inside.
    const osg::Vec3d centre = box.center();
    const osg::Vec3d up = std::abs(direction.z()) < 0.9 ? osg::Vec3d(0.0, 0.0, 1.0) : osg::Vec3d(0.0, 1.0, 0.0);
    const osg::Matrixd view = osg::Matrixd::lookAt(centre - direction, centre, up);
    osg::BoundingBox seen;
    for (unsigned int i = 0; i < 8; ++i)
        seen.expandBy(osg::Vec3d(box.corner(i)) * view);
    const double margin = 0.01 * box.radius() + 1.0;
    const osg::Matrixd projection =
        osg::Matrixd::ortho(seen.xMin() - margin, seen.xMax() + margin, seen.yMin() - margin, seen.yMax() + margin,
                            -seen.zMax() - margin, -seen.zMin() + margin);
    m_camera->setViewMatrix(view);
    m_camera->setProjectionMatrix(projection);
    m_worldToMap =
        view * projection * osg::Matrixd::translate(1.0, 1.0, 1.0) * osg::Matrixd::scale(0.5, 0.5, 0.5);
}

void DirectionalShadowMap::cull(osgUtil::CullVisitor& cv)
{
    if (!m_camera)
        init();
    osg::ref_ptr<CLight> light;
    if (!m_camera || !m_light.lock(light)) {
        _shadowedScene->osg::Group::traverse(cv);
        return;
    }
    if (needsDrawing(*light)) {
        m_direction = light->GetDirection();
        m_direction.normalize();
        m_bound = _shadowedScene->getBound();
        fitToCasters(m_direction);
        m_camera->accept(cv);
        light->SetShadowDirty(false);
        m_drawn = true;
        ++m_renderCount;
    }
    cullReceivers(cv);
}

void DirectionalShadowMap::CullCasters(osgUtil::CullVisitor& cv)
{
    const unsigned int mask = cv.getTraversalMask();
    cv.setTraversalMask(mask & _shadowedScene->getShadowSettings()->getCastsShadowTraversalMask());
    _shadowedScene->osg::Group::traverse(cv);
    cv.setTraversalMask(mask);
}

void DirectionalShadowMap::cullReceivers(osgUtil::CullVisitor& cv)
{
    const osgShadow::ShadowSettings* settings = _shadowedScene->getShadowSettings();
    const unsigned int mask = cv.getTraversalMask();
    cv.setTraversalMask(mask & settings->getReceivesShadowTraversalMask());
    cv.pushStateSet(m_receiving.get());
    _shadowedScene->osg::Group::traverse(cv);
    cv.popStateSet();
    cv.setTraversalMask(mask);
    // Through this frame's eye: a map drawn for another camera still lands
    // where it belongs.
    m_eyeToMap->set(osg::Matrixf(osg::Matrixd::inverse(*cv.getModelViewMatrix()) * m_worldToMap));
}

void DirectionalShadowMap::cleanSceneGraph() {}

void DirectionalShadowMap::resizeGLObjectBuffers(unsigned int maxSize)
{
    if (m_camera)
        m_camera->resizeGLObjectBuffers(maxSize);
    if (m_texture)
        m_texture->resizeGLObjectBuffers(maxSize);
}

void DirectionalShadowMap::releaseGLObjects(osg::State* state) const
{
    if (m_camera)
        m_camera->releaseGLObjects(state);
    if (m_texture)
        m_texture->releaseGLObjects(state);
}

} // namespace vpe
