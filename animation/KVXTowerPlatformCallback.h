#pragma once

#include "host/vpe/animation/CFrameCallback.h"

#include <memory>

class KVXCraneRig;
class KVXPlatformAnimationManager;
class KVXTowerCraneObject;
class PfGsView;

// Shows one crane as its live reading says: the upper works at the
// reported height, the mast cut there, the wall ties below shown, and the
// jib turning from the previous angle to the reported one over the five
// seconds after the reading came. Before the first reading the crane stays
// as modelled.
class KVXTowerPlatformCallback : public vpe::CFrameCallback {
public:
    KVXTowerPlatformCallback(KVXTowerCraneObject* crane, PfGsView* view, KVXPlatformAnimationManager* manager);

    void operator()(vpe::CSceneNode* node, const vpe::CFrameTime& time) override;

    // The jib's turn from the previous angle so far, radians.
    float GetTurn() const { return m_turn; }
    const KVXCraneRig* GetRig() const { return m_rig.get(); }

protected:
    ~KVXTowerPlatformCallback() override;

private:
    KVXTowerCraneObject* m_crane;
    KVXPlatformAnimationManager* m_manager;
    std::unique_ptr<KVXCraneRig> m_rig;
    float m_turn = 0.0f;
    float m_lastStamp = 0.0f;
    bool m_mastPrivate = false;
};
