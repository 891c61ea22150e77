#include "KVXTowerPlatformCallback.h"

#include "KVXPlatformAnimationManager.h"

#include "effects/KVXCraneRig.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfGsUtility.h"
#include "host/vpe/render/CViewer.h"

#include <cmath>

namespace {
constexpr float kDegree = 0.017453292f;
// The jib takes this long to reach a new reading's angle, seconds.
constexpr float kTurnTime = 5.0f;
} // namespace

KVXTowerPlatformCallback::KVXTowerPlatformCallback(KVXTowerCraneObject* crane, PfGsView* view,
                                                   KVXPlatformAnimationManager* manager)
    : m_crane(crane), m_manager(manager)
{
    // A crane its schedule drives already is left to it.
    if (!crane || crane->GetBeingAnimated() != 0)
        return;
    m_rig = std::make_unique<KVXCraneRig>(crane, view);
    if (!m_rig->IsReady())
        m_rig.reset();
    else
        crane->SetBeingAnimated(1);
}

KVXTowerPlatformCallback::~KVXTowerPlatformCallback()
{
    if (!m_rig)
        return;
    m_rig.reset();
    m_crane->SetBeingAnimated(0);
}

void KVXTowerPlatformCallback::operator()(vpe::CSceneNode*, const vpe::CFrameTime& time)
{
    const KVXPlatformTowerAnimationData data = m_manager->getAnimationDataFromTower(m_crane);
    if (data.deviceId.isEmpty() || !m_rig)
        return;
    const float t = time.time;
    m_manager->setAnimateTime(t);
    if (data.stamp > m_lastStamp)
        m_turn = 0.0f;
    const double raise = static_cast<double>(data.height) - m_crane->GetTowerHeight();
    // Spread over the five seconds after the reading; never shrinking.
    const float phase = std::fmod(t, kTurnTime);
    const float step = phase * ((data.rotation - data.previousRotation) * kDegree / kTurnTime);
    if (std::fabs(m_turn) < std::fabs(step))
        m_turn = step;
    const double angle = data.previousRotation * kDegree + m_turn;
    const osg::Vec3d axis(m_crane->GetPosition().x(), m_crane->GetPosition().y(), 0.0);
    const osg::Matrixd turn =
        osg::Matrixd::translate(-axis) * osg::Matrixd::rotate(angle, osg::Vec3d(0, 0, 1)) * osg::Matrixd::translate(axis);
    m_rig->Place(osg::Matrixd::translate(0.0, 0.0, raise), turn);
    if (!m_mastPrivate) {
        m_rig->PrivatizeMastStates();
        m_mastPrivate = true;
    }
    m_rig->ClipMast(data.height);
    m_rig->UpdateWallTies();
    m_lastStamp = data.stamp;
    if (vpe::CViewer* viewer = PfGsUtility::CurrentViewer())
        viewer->SetDirty();
}
