#include "CScene.h"

#include <osgShadow/ShadowedScene>
#include <osgShadow/ViewDependentShadowMap>

namespace vpe {

const std::string CScene::kShadowLightName = "vpe_directional_shadow_light";

namespace {
// Receives and casts shadows: the bits the shadow technique looks for.
constexpr unsigned int kReceivesShadowMask = 0x1;
constexpr unsigned int kCastsShadowMask = 0x2;
} // namespace

CScene::CScene() : m_lit(new osg::Group), m_root(new CGroupNode)
{
    m_root->setName("vpe_scene_root");
    m_lit->addChild(m_root);
    CLight* sun = AddLight(kShadowLightName);
    // Late morning sun from the south-east, high enough to read storeys.
    sun->SetDirection(osg::Vec3d(-0.45, 0.55, -0.70));
    sun->SetColors(osg::Vec4(0.85f, 0.83f, 0.78f, 1.0f), osg::Vec4(0.0f, 0.0f, 0.0f, 1.0f));
    osg::StateSet* state = m_lit->getOrCreateStateSet();
    state->setMode(GL_LIGHTING, osg::StateAttribute::ON);
    state->setMode(GL_LIGHT0, osg::StateAttribute::ON);
    state->setMode(GL_RESCALE_NORMAL, osg::StateAttribute::ON);
    rebuildTop();
}

CScene::~CScene() = default;

CLight* CScene::FindLight(const std::string& name) const
{
    auto it = m_lights.find(name);
    return it == m_lights.end() ? nullptr : it->second.get();
}

CLight* CScene::AddLight(const std::string& name)
{
    if (CLight* existing = FindLight(name))
        return existing;
    auto* light = new CLight(name, static_cast<int>(m_lights.size()));
    m_lights.emplace(name, light);
    m_lit->addChild(light);
    m_lit->getOrCreateStateSet()->setMode(static_cast<GLenum>(GL_LIGHT0 + m_lights.size() - 1),
                                          osg::StateAttribute::ON);
    return light;
}

void CScene::SetShadowsEnabled(bool enabled)
{
    if (enabled != m_shadowsEnabled) {
        m_shadowsEnabled = enabled;
        rebuildTop();
    }
}

void CScene::rebuildTop()
{
    osg::ref_ptr<osg::Group> top;
    if (m_shadowsEnabled) {
        osg::ref_ptr<osgShadow::ShadowedScene> shadowed = new osgShadow::ShadowedScene;
        osgShadow::ShadowSettings* settings = shadowed->getShadowSettings();
        settings->setReceivesShadowTraversalMask(kReceivesShadowMask);
        settings->setCastsShadowTraversalMask(kCastsShadowMask);
        settings->setLightNum(0);
        settings->setTextureSize(osg::Vec2s(2048, 2048));
        shadowed->setShadowTechnique(new osgShadow::ViewDependentShadowMap);
        top = shadowed;
    } else {
        top = new osg::Group;
    }
    top->addChild(m_lit);
    m_top = top;
}

} // namespace vpe
