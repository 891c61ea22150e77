#pragma once

#include "KVXCraneRig.h"
#include "KVXEffectContext.h"

#include "host/db/PfDbHandle.h"
#include "host/vpe/animation/CFrameCallback.h"
#include "host/vpe/scene/CGroupNode.h"

#include <osg/Matrixd>

#include <memory>

class KVXAnimation;
class KVXTowerAnimation;
class KVXTowerCraneObject;

// Plays a tower crane's record: the jib slews back and forth between the
// record's angles at a tenth of pi radians per second, the upper works stand
// at the height of the latest lifting step reached, the mast is cut there,
// wall ties show only once the climbing has passed them, and the crane is
// hidden before its erection (when it has a lifting schedule) and after its
// dismantling. The crane's scene group is rearranged for that while the
// callback lives, and put back when it dies.
class KVXTowerRotateCallback : public vpe::CFrameCallback {
public:
    KVXTowerRotateCallback(KVXAnimation* animation, KVXEffectContext* context);

    void operator()(vpe::CSceneNode* node, const vpe::CFrameTime& time) override;

    // Another callback already drives the crane: this one does nothing.
    bool IsInactive() const { return m_inactive; }
    vpe::CGroupNode* GetCraneRoot() const { return m_rig ? m_rig->GetRoot() : nullptr; }
    vpe::CGroupNode* GetJibNode() const { return m_rig ? m_rig->GetJibNode() : nullptr; }
    vpe::CGroupNode* GetUpperNode() const { return m_rig ? m_rig->GetUpperNode() : nullptr; }
    vpe::CGroupNode* GetMastNode() const { return m_rig ? m_rig->GetMastNode() : nullptr; }
    vpe::CGroupNode* GetTiesNode() const { return m_rig ? m_rig->GetTiesNode() : nullptr; }

    // The jib's angle in degrees after turning for that long from the start.
    double SlewAngle(double elapsed) const;
    // The height of the latest lifting step reached before that time (the
    // earliest step when none is); false without lifting steps.
    bool LiftingHeight(float time, int& height) const;

protected:
    ~KVXTowerRotateCallback() override;

private:
    void setInitialPose();
    osg::Matrixd raiseMatrix(float time) const;
    osg::Matrixd slewMatrix(double elapsed) const;
    bool hasLiftingData() const;
    // The crane element while its database lives; null once it is gone.
    KVXTowerCraneObject* liveCrane() const;

    KVXAnimation* m_animation;
    vpe::CRefPtr<KVXEffectContext> m_context;
    std::unique_ptr<KVXCraneRig> m_rig;
    KVXTowerCraneObject* m_crane = nullptr;
    // The callback may outlive the crane's document (a viewer kept alive):
    // the crane is found again through the context before it is touched at
    // the end.
    PfDbHandle m_craneHandle = kPfDbNullHandle;
    float m_startTime = 0.0f;
    float m_endTime = 0.0f;
    float m_duration = 0.0f;
    bool m_inactive = false;
};
