#include "PfDbDrawingHelper.h"

#include "KVXElementObject.h"
#include "PfGiWorldDraw.h"

#include <osg/Node>

PfDbDrawingHelper::PfDbDrawingHelper(vpe::CScene* scene, PfGsView* view, double distEpsilonCoefficient,
                                     double angleEpsilonCoefficient)
    : m_scene(scene),
      m_view(view),
      m_distEpsilonCoefficient(distEpsilonCoefficient),
      m_angleEpsilonCoefficient(angleEpsilonCoefficient)
{
}

vpe::CRefPtr<vpe::CSceneNode> PfDbDrawingHelper::Draw(PfDbEntity* entity) const
{
    KVXElementObject* element = KVXElementObject::Cast(entity);
    if (!element)
        return nullptr;
    PfGiWorldDraw draw(PfGiWorldDraw::kModel3d);
    vpe::CSceneNode* drawn = nullptr;
    if (!element->draw3d(&draw, drawn))
        return nullptr;
    return drawn;
}
