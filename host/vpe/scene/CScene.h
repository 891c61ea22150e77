#pragma once

#include "CGroupNode.h"
#include "CLight.h"
#include "DirectionalShadowMap.h"
#include "host/vpe/core/CReferenced.h"

#include <osg/Group>

#include <map>
#include <string>

namespace vpe {

// What a viewer shows: the root node that holds the model, and the named
// lights over it. Every scene has the sun, a directional light named
// kShadowLightName that casts the scene's shadows.
class CScene : public CReferenced {
public:
    static const std::string kShadowLightName;
    // The uniform that tells the scene's shaders whether to light what they
    // draw (false where the fixed-function lighting mode is off).
    static const char* const kLightingUniform;
    // Node mask bits the shadows look at: a node without kCastsShadowMask
    // (a label, an overlay) throws no shadow.
    static constexpr unsigned int kReceivesShadowMask = 0x1;
    static constexpr unsigned int kCastsShadowMask = 0x2;

    CScene();

    CGroupNode* GetRootNode() const { return m_root.get(); }
    // The node a viewer draws: lights, shadows and the root.
    osg::Group* GetTopNode() const { return m_top.get(); }

    CLight* FindLight(const std::string& name) const;
    CLight* AddLight(const std::string& name);

    // Shadows of the sun on the model; on by default.
    void SetShadowsEnabled(bool enabled);
    bool GetShadowsEnabled() const { return m_shadowsEnabled; }
    // Null while shadows are off.
    DirectionalShadowMap* GetShadowMap() const { return m_shadowMap.get(); }
    // Makes every light draw its shadows again on the next render; for
    // changes of the model that the bounds do not show (a part cut away by
    // a clip plane, an element moved within the site).
    void SetShadowsDirty();

protected:
    ~CScene() override;

private:
    void rebuildTop();

    osg::ref_ptr<osg::Group> m_top;
    osg::ref_ptr<osg::Group> m_lit;
    osg::ref_ptr<CGroupNode> m_root;
    std::map<std::string, osg::ref_ptr<CLight>> m_lights;
    osg::ref_ptr<DirectionalShadowMap> m_shadowMap;
    bool m_shadowsEnabled = true;
};

} // namespace vpe
