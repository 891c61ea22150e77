#include "CScene.h"

#include <osg/Program>
#include <osg/Uniform>
#include <osgShadow/ShadowedScene>

namespace vpe {

const std::string CScene::kShadowLightName = "vpe_directional_shadow_light";
const char* const CScene::kLightingUniform = "vpe_lighting";

namespace {
constexpr int kShadowTextureUnit = 1;

// Lighting by the sun (light 0) as the fixed pipeline does it, two-sided,
// with the sun's share taken away where the shadow map says the sun is
// hidden. Unlit geometry keeps its colour. gl_ClipVertex keeps user clip
// planes working under the program. vpe_shadowMatrix (set by the shadow
// map) takes eye coordinates to the map's.
const char* const kVertexShader = R"(
#version 120
uniform mat4 vpe_shadowMatrix;
varying vec4 vpe_ambient;
varying vec4 vpe_diffuse;
void main()
{
    vec4 eye = gl_ModelViewMatrix * gl_Vertex;
    gl_Position = gl_ProjectionMatrix * eye;
    gl_ClipVertex = eye;
    gl_FrontColor = gl_Color;
    vec3 normal = normalize(gl_NormalMatrix * gl_Normal);
    if (dot(normal, -eye.xyz) < 0.0)
        normal = -normal;
    float facing = max(dot(normal, normalize(gl_LightSource[0].position.xyz)), 0.0);
    vpe_ambient = gl_FrontLightModelProduct.sceneColor + gl_FrontLightProduct[0].ambient;
    vpe_diffuse = gl_FrontLightProduct[0].diffuse * facing;
    vpe_ambient.a = gl_FrontMaterial.diffuse.a;
    gl_TexCoord[1] = vpe_shadowMatrix * eye;
}
)";

const char* const kFragmentShader = R"(
#version 120
uniform sampler2DShadow vpe_shadowTexture;
uniform bool vpe_lighting;
varying vec4 vpe_ambient;
varying vec4 vpe_diffuse;
void main()
{
    if (!vpe_lighting) {
        gl_FragColor = gl_Color;
        return;
    }
    float sunlit = shadow2DProj(vpe_shadowTexture, gl_TexCoord[1]).r;
    gl_FragColor = vec4(vpe_ambient.rgb + vpe_diffuse.rgb * sunlit, vpe_ambient.a);
}
)";

osg::Program* shadowProgram()
{
    static osg::ref_ptr<osg::Program> program = [] {
        osg::ref_ptr<osg::Program> p = new osg::Program;
        p->setName("vpe_shadowed_lighting");
        p->addShader(new osg::Shader(osg::Shader::VERTEX, kVertexShader));
        p->addShader(new osg::Shader(osg::Shader::FRAGMENT, kFragmentShader));
        return p;
    }();
    return program.get();
}
} // namespace

CScene::CScene() : m_lit(new osg::Group), m_root(new CGroupNode)
{
    m_root->setName("vpe_scene_root");
    m_lit->addChild(m_root);
    CLight* sun = AddLight(kShadowLightName);
    // Late morning sun from the south-east, high enough to read storeys.
    sun->SetDirection(osg::Vec3d(-0.45, 0.55, -0.70));
    sun->SetColors(osg::Vec4(0.80f, 0.78f, 0.74f, 1.0f), osg::Vec4(0.094f, 0.094f, 0.094f, 1.0f));
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

void CScene::SetShadowsDirty()
{
    for (auto& entry : m_lights)
        entry.second->SetShadowDirty(true);
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
        settings->setTextureSize(osg::Vec2s(1024, 1024));
        settings->setBaseShadowTextureUnit(kShadowTextureUnit);
        settings->setShaderHint(osgShadow::ShadowSettings::NO_SHADERS);
        m_shadowMap = new DirectionalShadowMap(FindLight(kShadowLightName));
        shadowed->setShadowTechnique(m_shadowMap.get());
        top = shadowed;
    } else {
        m_shadowMap = nullptr;
        top = new osg::Group;
    }
    osg::StateSet* state = m_lit->getOrCreateStateSet();
    if (m_shadowsEnabled) {
        state->setAttributeAndModes(shadowProgram(), osg::StateAttribute::ON);
        state->addUniform(new osg::Uniform("vpe_shadowTexture", kShadowTextureUnit));
        state->addUniform(new osg::Uniform(kLightingUniform, true));
    } else {
        state->removeAttribute(osg::StateAttribute::PROGRAM);
        state->removeUniform("vpe_shadowTexture");
    }
    top->addChild(m_lit);
    m_top = top;
}

} // namespace vpe
