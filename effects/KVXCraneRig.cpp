#include "KVXCraneRig.h"

#include "KVXAnimPlane.h"
#include "KVXAnimPlaneVisitor.h"
#include "KVXCloneStateSetVisitor.h"
#include "KVXNodeVisibility.h"

#include "host/db/PfGsView.h"
#include "host/model/KVXTowerCraneObject.h"

#include <osg/ComputeBoundsVisitor>

namespace {

// A wall tie shows once the upper works have climbed this far above it.
constexpr double kTieClearance = 6000.0;

osg::BoundingBox boundsOf(osg::Node* node)
{
    osg::ComputeBoundsVisitor bounds;
    node->accept(bounds);
    return bounds.getBoundingBox();
}

} // namespace

KVXCraneRig::KVXCraneRig(KVXTowerCraneObject* crane, PfGsView* view) : m_crane(crane)
{
    auto* group = view && crane ? dynamic_cast<vpe::CGroupNode*>(view->GetSceneNode(crane->GetHandle())) : nullptr;
    if (!group || group->getNumParents() == 0 || group->getNumChildren() < 4)
        return;
    m_group = group;
    m_root = new vpe::CGroupNode;
    m_root->setName("kvx_tower_crane_root");
    group->getParent(0)->addChild(m_root.get());
    vpe::CRefPtr<vpe::CGroupNode>* wrappers[] = {&m_jib, &m_upper, &m_mast, &m_ties};
    for (vpe::CRefPtr<vpe::CGroupNode>* wrapper : wrappers) {
        *wrapper = new vpe::CGroupNode;
        (*wrapper)->addChild(group->getChild(0));
        group->removeChild(0u);
        m_root->addChild(wrapper->get());
    }
    while (group->getNumChildren() > 0) {
        m_root->addChild(group->getChild(0));
        group->removeChild(0u);
    }
}

KVXCraneRig::~KVXCraneRig() { putBack(); }

void KVXCraneRig::putBack()
{
    if (!m_root || !m_group)
        return;
    for (vpe::CGroupNode* wrapper : {m_jib.get(), m_upper.get(), m_mast.get(), m_ties.get()}) {
        if (wrapper->getNumChildren() > 0)
            m_group->addChild(wrapper->getChild(0));
    }
    for (unsigned int i = 4; i < m_root->getNumChildren(); ++i)
        m_group->addChild(m_root->getChild(i));
    while (m_root->getNumParents() > 0)
        m_root->getParent(0)->removeChild(m_root.get());
    // The mast's cut goes with the rig.
    KVXAnimPlaneVisitor uncut(nullptr, true, 0);
    m_mast->accept(uncut);
    for (unsigned int i = 0; i < m_group->getNumChildren(); ++i)
        KVXNodeVisibility::SetVisible(m_group->getChild(i), true);
    if (m_ties->getNumChildren() > 0) {
        if (osg::Group* ties = m_ties->getChild(0)->asGroup()) {
            for (unsigned int i = 0; i < ties->getNumChildren(); ++i)
                KVXNodeVisibility::SetVisible(ties->getChild(i), true);
        }
    }
}

void KVXCraneRig::Place(const osg::Matrixd& raise, const osg::Matrixd& turn)
{
    m_upper->setMatrix(raise);
    m_jib->setMatrix(turn * raise);
}

void KVXCraneRig::PrivatizeMastStates()
{
    KVXCloneStateSetVisitor privateStates;
    m_mast->accept(privateStates);
}

void KVXCraneRig::ClipMast(double height)
{
    const vpe::CVec3<double>& foot = m_crane->GetPosition();
    const KVXAnimPlane plane{{foot.x(), foot.y(), foot.z() + height}, {0, 0, -1}};
    KVXAnimPlaneVisitor cut(&plane, false, 0);
    m_mast->accept(cut);
}

void KVXCraneRig::UpdateWallTies()
{
    osg::Group* ties = m_ties->getNumChildren() > 0 ? m_ties->getChild(0)->asGroup() : nullptr;
    if (!ties)
        return;
    const double upperBottom = boundsOf(m_upper.get()).zMin();
    for (unsigned int i = 0; i < ties->getNumChildren(); ++i) {
        osg::Node* tie = ties->getChild(i);
        KVXNodeVisibility::SetVisible(tie, true);
        const double top = boundsOf(tie).zMax();
        KVXNodeVisibility::SetVisible(tie, top + kTieClearance < upperBottom);
    }
}

void KVXCraneRig::SetVisible(bool visible) { KVXNodeVisibility::SetVisible(m_root.get(), visible); }
