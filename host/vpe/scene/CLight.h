#pragma once

#include <osg/LightSource>

#include <string>

namespace vpe {

// A named light of a scene. A directional light may cast shadows; a change of
// the scene that moves shadows marks it shadow-dirty so that its shadow map
// is drawn again.
class CLight : public osg::LightSource {
public:
    CLight(const std::string& name, int lightNumber);

    // Light travelling along the direction (from the sun towards the ground).
    void SetDirection(const osg::Vec3d& direction);
    osg::Vec3d GetDirection() const;
    void SetColors(const osg::Vec4& diffuse, const osg::Vec4& ambient);
    void SetShadowDirty(bool dirty) { m_shadowDirty = dirty; }
    bool IsShadowDirty() const { return m_shadowDirty; }

protected:
    ~CLight() override = default;

private:
    bool m_shadowDirty = true;
};

} // namespace vpe
