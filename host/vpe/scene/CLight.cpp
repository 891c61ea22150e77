#include "CLight.h"

namespace vpe {

CLight::CLight(const std::string& name, int lightNumber)
{
    setName(name);
    auto* light = new osg::Light(lightNumber);
    light->setSpecular(osg::Vec4(0.0f, 0.0f, 0.0f, 1.0f));
    setLight(light);
    SetDirection(osg::Vec3d(0.0, 0.0, -1.0));
}

void CLight::SetDirection(const osg::Vec3d& direction)
{
    osg::Vec3d towardsLight = -direction;
    towardsLight.normalize();
    getLight()->setPosition(osg::Vec4(towardsLight, 0.0f));
    m_shadowDirty = true;
}

osg::Vec3d CLight::GetDirection() const
{
    const osg::Vec4& p = getLight()->getPosition();
    return -osg::Vec3d(p.x(), p.y(), p.z());
}

void CLight::SetColors(const osg::Vec4& diffuse, const osg::Vec4& ambient)
{
    getLight()->setDiffuse(diffuse);
    getLight()->setAmbient(ambient);
}

} // namespace vpe
