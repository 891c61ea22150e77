#pragma once

#include "host/vpe/core/CReferenced.h"
#include "host/vpe/scene/CGroupNode.h"

#include <osg/Matrixd>

class KVXTowerCraneObject;
class PfGsView;

// A tower crane's scene group taken apart so that its parts can move: the
// jib, the upper works, the mast and the wall ties each under a group of
// their own, all under one root beside the crane's group. Whoever drives a
// crane (its schedule record, or live readings) places the parts; the rig
// puts the crane's group back as it was when it goes.
class KVXCraneRig {
public:
    // Takes the crane's group of the view apart; IsReady says whether it
    // could (the crane is drawn there with its four parts).
    KVXCraneRig(KVXTowerCraneObject* crane, PfGsView* view);
    ~KVXCraneRig();
    KVXCraneRig(const KVXCraneRig&) = delete;
    KVXCraneRig& operator=(const KVXCraneRig&) = delete;

    bool IsReady() const { return m_root.valid(); }
    vpe::CGroupNode* GetRoot() const { return m_root.get(); }
    vpe::CGroupNode* GetJibNode() const { return m_jib.get(); }
    vpe::CGroupNode* GetUpperNode() const { return m_upper.get(); }
    vpe::CGroupNode* GetMastNode() const { return m_mast.get(); }
    vpe::CGroupNode* GetTiesNode() const { return m_ties.get(); }

    // The upper works raised, the jib turned and raised with them.
    void Place(const osg::Matrixd& raise, const osg::Matrixd& turn);
    // The mast gets state sets of its own, so that its cut is its alone.
    void PrivatizeMastStates();
    // The mast cut at that height above the crane's foot.
    void ClipMast(double height);
    // Each wall tie shows once the upper works have climbed well past it.
    void UpdateWallTies();
    void SetVisible(bool visible);

private:
    void putBack();

    KVXTowerCraneObject* m_crane;
    vpe::CRefPtr<vpe::CGroupNode> m_group;
    vpe::CRefPtr<vpe::CGroupNode> m_root;
    vpe::CRefPtr<vpe::CGroupNode> m_jib;
    vpe::CRefPtr<vpe::CGroupNode> m_upper;
    vpe::CRefPtr<vpe::CGroupNode> m_mast;
    vpe::CRefPtr<vpe::CGroupNode> m_ties;
};
