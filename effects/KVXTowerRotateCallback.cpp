#include "KVXTowerRotateCallback.h"

#include "animation/KVXTowerAnimation.h"
#include "host/db/PfDbDatabase.h"
#include "host/model/KVXTowerCraneObject.h"

#include <osg/Math>

#include <cmath>

namespace {

// A tenth of pi radians (18 degrees) per second.
const double kSlewSpeed = osg::PI / 10.0;
// The time the first pose is taken at: just after the schedule's start.
constexpr float kInitialPoseTime = 0.001f;

} // namespace

KVXTowerRotateCallback::KVXTowerRotateCallback(KVXAnimation* animation, KVXEffectContext* context)
    : m_animation(animation), m_context(context)
{
    if (!context || !animation)
        return;
    m_crane = KVXTowerCraneObject::Cast(context->GetItem(static_cast<PfDbHandle>(animation->getObjId())));
    if (!m_crane)
        return;
    m_craneHandle = m_crane->GetHandle();
    m_inactive = m_crane->GetBeingAnimated() != 0;
    if (m_inactive)
        return;
    m_crane->SetBeingAnimated(1);
    m_startTime = context->TimeAt(animation->getStartDate());
    m_endTime = context->TimeAt(animation->getLoopPlayback() ? animation->getLoopEndDate() : animation->getEndDate());
    m_duration = m_endTime - m_startTime;
    m_rig = std::make_unique<KVXCraneRig>(m_crane, context->GetView());
    if (!m_rig->IsReady())
        m_rig.reset();
    else if (hasLiftingData())
        setInitialPose();
}

KVXTowerRotateCallback::~KVXTowerRotateCallback()
{
    if (m_inactive || !m_crane)
        return;
    m_rig.reset();
    if (KVXTowerCraneObject* crane = liveCrane())
        crane->SetBeingAnimated(0);
}

KVXTowerCraneObject* KVXTowerRotateCallback::liveCrane() const
{
    PfDbDatabase* database = m_context->GetDatabase();
    // Erased or not, the object stays in its database.
    return database ? KVXTowerCraneObject::Cast(database->OpenObject(m_craneHandle, true)) : nullptr;
}

bool KVXTowerRotateCallback::hasLiftingData() const
{
    const auto* tower = KVXTowerAnimation::Cast(m_animation);
    return tower && !tower->GetLiftingData().isEmpty();
}

void KVXTowerRotateCallback::setInitialPose()
{
    m_rig->Place(raiseMatrix(kInitialPoseTime), osg::Matrixd::identity());
    int height = 0;
    if (LiftingHeight(kInitialPoseTime, height)) {
        m_rig->PrivatizeMastStates();
        m_rig->ClipMast(height);
    }
    m_rig->UpdateWallTies();
    m_rig->SetVisible(false);
}

bool KVXTowerRotateCallback::LiftingHeight(float time, int& height) const
{
    const auto* tower = KVXTowerAnimation::Cast(m_animation);
    if (!tower || tower->GetLiftingData().isEmpty())
        return false;
    const QList<KVXTowerLiftingData>& steps = tower->GetLiftingData();
    QDate best(9999, 1, 1);
    const KVXTowerLiftingData* chosen = nullptr;
    for (const KVXTowerLiftingData& step : steps) {
        if (step.date < best) {
            best = step.date;
            chosen = &step;
        }
    }
    for (const KVXTowerLiftingData& step : steps) {
        if (m_context->TimeAt(step.date) < time && step.date > best) {
            best = step.date;
            chosen = &step;
        }
    }
    // Steps all dated 9999-01-01 or later: the first one stands.
    height = chosen ? chosen->height : steps.front().height;
    return true;
}

osg::Matrixd KVXTowerRotateCallback::raiseMatrix(float time) const
{
    int height = 0;
    if (!LiftingHeight(time, height))
        return osg::Matrixd::identity();
    return osg::Matrixd::translate(0.0, 0.0, static_cast<double>(height - m_crane->GetTowerHeight()));
}

double KVXTowerRotateCallback::SlewAngle(double elapsed) const
{
    const double start = m_animation->getStartAngle();
    const double end = m_animation->getEndAngle();
    const auto span = static_cast<float>(std::fabs(end - start));
    const double sweepTime = osg::DegreesToRadians(static_cast<double>(span)) / kSlewSpeed;
    if (!(sweepTime > 0.0) || elapsed <= 0.0)
        return start;
    // Whole sweeps done, and the time into the current one.
    const double sweeps = std::floor(elapsed / sweepTime);
    const double into = elapsed - sweeps * sweepTime;
    const double offset = into * span / sweepTime;
    const bool backwards = std::fmod(sweeps, 2.0) != 0.0;
    if (!backwards)
        return start <= end ? start + offset : start - offset;
    return end < start ? end + offset : end - offset;
}

osg::Matrixd KVXTowerRotateCallback::slewMatrix(double elapsed) const
{
    const osg::Vec3d axisPoint(m_crane->GetPosition().x(), m_crane->GetPosition().y(), 0.0);
    return osg::Matrixd::translate(-axisPoint) *
           osg::Matrixd::rotate(osg::DegreesToRadians(SlewAngle(elapsed)), osg::Vec3d(0, 0, 1)) *
           osg::Matrixd::translate(axisPoint);
}

void KVXTowerRotateCallback::operator()(vpe::CSceneNode*, const vpe::CFrameTime& time)
{
    if (m_inactive || !m_rig || !KVXTowerAnimation::Cast(m_animation))
        return;
    const auto* tower = KVXTowerAnimation::Cast(m_animation);
    const float t = time.time;
    if (t < m_startTime && hasLiftingData()) {
        m_rig->SetVisible(false);
        return;
    }
    if (tower->GetIsDismantle() && t > m_context->TimeAt(tower->GetDismantleDate())) {
        m_rig->SetVisible(false);
        return;
    }
    if (t < m_startTime || t > m_endTime)
        return;
    m_rig->SetVisible(true);
    m_rig->Place(raiseMatrix(t), slewMatrix(t - m_startTime));
    int height = 0;
    if (LiftingHeight(t, height))
        m_rig->ClipMast(height);
    m_rig->UpdateWallTies();
    m_context->MarkViewerDirty();
}
