#pragma once

#include "CLight.h"

#include <osg/BoundingSphere>
#include <osg/Camera>
#include <osg/Matrixd>
#include <osg/StateSet>
#include <osg/Texture2D>
#include <osg/Uniform>
#include <osg/observer_ptr>
#include <osgShadow/ShadowTechnique>

namespace vpe {

// The shadows of one directional light through a depth map that covers every
// shadow-casting node, not only what the camera sees: however the camera
// moves, the map stays right, so frames only look it up.
//
// The map is drawn again when something that moves shadows has changed:
// - the light is shadow-dirty (CLight marks itself when its direction is set;
//   a viewer marks its scene's lights whenever the scene is marked changed,
//   which is what a schedule step cutting elements with clip planes does);
// - the light's direction differs from the one the map was drawn with;
// - the bounding sphere of the shadowed scene differs (nodes added, removed
//   or moved without anyone saying so).
// Drawing the map clears the light's shadow-dirty flag.
class DirectionalShadowMap : public osgShadow::ShadowTechnique {
public:
    DirectionalShadowMap() = default;
    explicit DirectionalShadowMap(CLight* light);
    DirectionalShadowMap(const DirectionalShadowMap& other, const osg::CopyOp& copy = osg::CopyOp::SHALLOW_COPY);
    META_Object(vpe, DirectionalShadowMap);

    // How many times the map has been drawn.
    unsigned int GetRenderCount() const { return m_renderCount; }

    void init() override;
    void update(osg::NodeVisitor& nv) override;
    void cull(osgUtil::CullVisitor& cv) override;
    void cleanSceneGraph() override;
    void resizeGLObjectBuffers(unsigned int maxSize) override;
    void releaseGLObjects(osg::State* state = nullptr) const override;

    // Called by the map's camera while culling: the casting nodes.
    void CullCasters(osgUtil::CullVisitor& cv);

protected:
    ~DirectionalShadowMap() override = default;

private:
    bool needsDrawing(const CLight& light) const;
    void fitToCasters(const osg::Vec3d& direction);
    void cullReceivers(osgUtil::CullVisitor& cv);

    osg::observer_ptr<CLight> m_light;
    osg::ref_ptr<osg::Texture2D> m_texture;
    osg::ref_ptr<osg::Camera> m_camera;
    osg::ref_ptr<osg::StateSet> m_receiving;
    // Eye coordinates to the map's texture coordinates, for the receivers'
    // shader; world to texture coordinates is fixed while the map is kept.
    osg::ref_ptr<osg::Uniform> m_eyeToMap;
    osg::Matrixd m_worldToMap;
    osg::Vec3d m_direction;
    osg::BoundingSphere m_bound;
    bool m_drawn = false;
    unsigned int m_renderCount = 0;
};

} // namespace vpe
