#pragma once

#include "host/vpe/core/CReferenced.h"
#include "host/vpe/scene/CSceneNode.h"

class PfDbEntity;
class PfGsView;

namespace vpe {
class CScene;
}

// Draws an entity into a scene node of its own, apart from the node its view
// keeps for it: a second drawing that can be cut or coloured without
// touching the first.
class PfDbDrawingHelper {
public:
    PfDbDrawingHelper(vpe::CScene* scene, PfGsView* view, double distEpsilonCoefficient,
                      double angleEpsilonCoefficient);

    // A new node with the entity's 3D drawing; null when it draws nothing.
    vpe::CRefPtr<vpe::CSceneNode> Draw(PfDbEntity* entity) const;

    vpe::CScene* GetScene() const { return m_scene; }
    PfGsView* GetView() const { return m_view; }

private:
    vpe::CScene* m_scene;
    PfGsView* m_view;
    double m_distEpsilonCoefficient;
    double m_angleEpsilonCoefficient;
};
