#include "KVXTowerRotateCallback.h"

#include "KVXAnimPlaneVisitor.h"
#include "KVXCloneStateSetVisitor.h"
#include "KVXNodeVisibility.h"

#include "animation/KVXTowerAnimation.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfGsView.h"
#include "host/model/KVXTowerCraneObject.h"

#include <osg/ComputeBoundsVisitor>
#include <osg/Math>

#include <cmath>

namespace {

// A tenth of pi radians (18 degrees) per second.
const double kSlewSpeed = osg::PI / 10.0;
// A wall tie shows once the upper works have climbed this far above it.
constexpr double kTieClearance = 6000.0;
// The time the first pose is taken at: just after the schedule's start.
constexpr float kInitialPoseTime = 0.001f;

osg::BoundingBox boundsOf(osg::Node* node)
{
    osg::ComputeBoundsVisitor bounds;
    node->accept(bounds);
    return bounds.getBoundingBox();
}

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
    if (restructure() && hasLiftingData())
        setInitialPose();
}

KVXTowerRotateCallback::~KVXTowerRotateCallback()
{
    if (m_inactive || !m_crane)
        return;
    putBack();
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

bool KVXTowerRotateCallback::restructure()
{
    PfGsView* view = m_context->GetView();
    auto* group = view ? dynamic_cast<vpe::CGroupNode*>(view->GetSceneNode(m_crane->GetHandle())) : nullptr;
    if (!group || group->getNumParents() == 0 || group->getNumChildren() < 4)
        return false;
    m_craneGroup = group;
    m_craneRoot = new vpe::CGroupNode;
    m_craneRoot->setName("kvx_tower_crane_root");
    group->getParent(0)->addChild(m_craneRoot.get());
    vpe::CRefPtr<vpe::CGroupNode>* wrappers[] = {&m_jibNode, &m_upperNode, &m_mastNode, &m_tiesNode};
    for (vpe::CRefPtr<vpe::CGroupNode>* wrapper : wrappers) {
        *wrapper = new vpe::CGroupNode;
        (*wrapper)->addChild(group->getChild(0));
        group->removeChild(0u);
        m_craneRoot->addChild(wrapper->get());
    }
    while (group->getNumChildren() > 0) {
        m_craneRoot->addChild(group->getChild(0));
        group->removeChild(0u);
    }
    return true;
}

void KVXTowerRotateCallback::putBack()
{
    if (!m_craneRoot || !m_craneGroup)
        return;
    for (vpe::CGroupNode* wrapper : {m_jibNode.get(), m_upperNode.get(), m_mastNode.get(), m_tiesNode.get()}) {
        if (wrapper->getNumChildren() > 0)
            m_craneGroup->addChild(wrapper->getChild(0));
    }
    for (unsigned int i = 4; i < m_craneRoot->getNumChildren(); ++i)
        m_craneGroup->addChild(m_craneRoot->getChild(i));
    while (m_craneRoot->getNumParents() > 0)
        m_craneRoot->getParent(0)->removeChild(m_craneRoot.get());
    // The mast's cut goes with the callback.
    KVXAnimPlaneVisitor uncut(nullptr, true, 0);
    m_mastNode->accept(uncut);
    for (unsigned int i = 0; i < m_craneGroup->getNumChildren(); ++i)
        KVXNodeVisibility::SetVisible(m_craneGroup->getChild(i), true);
    if (m_tiesNode->getNumChildren() > 0) {
        if (osg::Group* ties = m_tiesNode->getChild(0)->asGroup()) {
            for (unsigned int i = 0; i < ties->getNumChildren(); ++i)
                KVXNodeVisibility::SetVisible(ties->getChild(i), true);
        }
    }
}

void KVXTowerRotateCallback::setInitialPose()
{
    const osg::Matrixd raise = raiseMatrix(kInitialPoseTime);
    m_upperNode->setMatrix(raise);
    m_jibNode->setMatrix(raise);
    int height = 0;
    if (LiftingHeight(kInitialPoseTime, height)) {
        KVXCloneStateSetVisitor privateStates;
        m_mastNode->accept(privateStates);
        clipMast(height);
    }
    updateWallTies();
    KVXNodeVisibility::SetVisible(m_craneRoot.get(), false);
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

void KVXTowerRotateCallback::clipMast(int height)
{
    const vpe::CVec3<double>& foot = m_crane->GetPosition();
    const KVXAnimPlane plane{{foot.x(), foot.y(), foot.z() + height}, {0, 0, -1}};
    KVXAnimPlaneVisitor cut(&plane, false, 0);
    m_mastNode->accept(cut);
}

void KVXTowerRotateCallback::updateWallTies()
{
    osg::Group* ties = m_tiesNode->getNumChildren() > 0 ? m_tiesNode->getChild(0)->asGroup() : nullptr;
    if (!ties)
        return;
    const double upperBottom = boundsOf(m_upperNode.get()).zMin();
    for (unsigned int i = 0; i < ties->getNumChildren(); ++i) {
        osg::Node* tie = ties->getChild(i);
        KVXNodeVisibility::SetVisible(tie, true);
        const double top = boundsOf(tie).zMax();
        KVXNodeVisibility::SetVisible(tie, top + kTieClearance < upperBottom);
    }
}

void KVXTowerRotateCallback::operator()(vpe::CSceneNode*, const vpe::CFrameTime& time)
{
    if (m_inactive || !m_craneRoot || !KVXTowerAnimation::Cast(m_animation))
        return;
    const auto* tower = KVXTowerAnimation::Cast(m_animation);
    const float t = time.time;
    if (t < m_startTime && hasLiftingData()) {
        KVXNodeVisibility::SetVisible(m_craneRoot.get(), false);
        return;
    }
    if (tower->GetIsDismantle() && t > m_context->TimeAt(tower->GetDismantleDate())) {
        KVXNodeVisibility::SetVisible(m_craneRoot.get(), false);
        return;
    }
    if (t < m_startTime || t > m_endTime)
        return;
    KVXNodeVisibility::SetVisible(m_craneRoot.get(), true);
    const osg::Matrixd raise = raiseMatrix(t);
    m_upperNode->setMatrix(osg::Matrixf(raise));
    m_jibNode->setMatrix(osg::Matrixf(slewMatrix(t - m_startTime) * raise));
    int height = 0;
    if (LiftingHeight(t, height))
        clipMast(height);
    updateWallTies();
    m_context->MarkViewerDirty();
}
