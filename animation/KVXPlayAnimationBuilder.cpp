#include "KVXPlayAnimationBuilder.h"

#include "KVXAnimation.h"

#include "effects/KVXAnimLayeringTransCallback.h"
#include "effects/KVXAnimTransCallback.h"
#include "effects/KVXAntiColorCallback.h"
#include "effects/KVXCloneStateSetVisitor.h"
#include "effects/KVXTowerRotateCallback.h"
#include "host/db/PfDbDocument.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/vpe/animation/CAnimationManager.h"
#include "host/vpe/animation/CNodeTrack.h"
#include "host/vpe/render/CViewer.h"

#include <cmath>
#include <string>

namespace {

// A turn about the vertical through the centre, then a shift, as a node
// track's rotation and position over the pivot (which brings the centre to
// the origin). The track interpolates the position in a straight line: with
// the centre at the origin under the turn, a turn keyed only at its ends
// keeps the element on its centre.
vpe::CNodeKeyFrame turnAbout(double time, const osg::Vec3d& centre, double degrees, const osg::Vec3d& shift)
{
    vpe::CNodeKeyFrame key;
    key.time = time;
    key.rotation = osg::Quat(osg::DegreesToRadians(degrees), osg::Vec3d(0, 0, 1));
    key.position = centre + shift;
    return key;
}

double headingOf(const osg::Vec3d& from, const osg::Vec3d& to)
{
    return osg::RadiansToDegrees(std::atan2(to.y() - from.y(), to.x() - from.x()));
}

} // namespace

KVXPlayAnimationBuilder::KVXPlayAnimationBuilder(PfDbDocument* document, vpe::CViewer* viewer,
                                                 vpe::CClockTimer* dateClock, const KVXScheduleTimeScale* timeScale,
                                                 double scheduleLength)
    : m_document(document),
      m_viewer(viewer),
      m_dateClock(dateClock),
      m_timeScale(timeScale),
      m_scheduleLength(scheduleLength),
      m_context(new KVXEffectContext(document, viewer, timeScale))
{
}

bool KVXPlayAnimationBuilder::Build(KVXAnimation* record) const
{
    if (!m_viewer || !record || !m_document || !m_document->GetActiveView())
        return false;
    if (!m_document->GetItem(static_cast<PfDbHandle>(record->getObjId())))
        return false;
    vpe::CSceneNode* node = record->getNode();
    if (!node)
        return false;
    switch (record->getAnimationType()) {
    case KVXAnimation::Construction:
    case KVXAnimation::Demolition: return buildCut(record, node);
    case KVXAnimation::Rotation: return buildRotation(record, node);
    case KVXAnimation::Path: return buildPath(record, node);
    case KVXAnimation::Emphasis: return buildEmphasis(record, node);
    }
    return false;
}

vpe::CAnimation* KVXPlayAnimationBuilder::createAnimation(const KVXAnimation* record) const
{
    vpe::CAnimationManager* engine = m_viewer->GetAnimationManager();
    const std::string name = std::to_string(record->getNumber());
    // A leftover of the same name (a damaged file with a number twice) goes.
    engine->DestroyAnimator(name);
    engine->DestroyAnimation(name);
    return engine->CreateAnimation(name, m_scheduleLength);
}

bool KVXPlayAnimationBuilder::attach(KVXAnimation* record, vpe::CAnimation* animation) const
{
    vpe::CAnimator* animator =
        m_viewer->GetAnimationManager()->CreateAnimator(std::to_string(record->getNumber()), animation, m_dateClock);
    if (!animator)
        return false;
    animator->SetLoop(false);
    animator->Enable();
    record->setAnimation(animation);
    record->setAnimator(animator);
    return true;
}

bool KVXPlayAnimationBuilder::buildCut(KVXAnimation* record, vpe::CSceneNode* node) const
{
    // Elements drawn alike share state sets: this one's planes must not cut
    // the others.
    KVXCloneStateSetVisitor privateStates;
    node->accept(privateStates);
    vpe::CAnimation* animation = createAnimation(record);
    vpe::CRefPtr<vpe::CFrameCallback> callback;
    if (record->getIsLayering())
        callback = new KVXAnimLayeringTransCallback(record, m_context.get());
    else
        callback = new KVXAnimTransCallback(record, m_context.get());
    animation->SetFrameCallback(node, callback.get());
    return attach(record, animation);
}

std::vector<double> KVXPlayAnimationBuilder::roundTimes(const KVXAnimation* record) const
{
    const double start = m_timeScale->TimeAt(record->getStartDate());
    const double end = m_timeScale->TimeAt(record->getEndDate());
    std::vector<double> times{start, end};
    const double round = end - start;
    if (record->getLoopPlayback() && round > 0.0) {
        const double loopEnd = m_timeScale->TimeAt(record->getLoopEndDate());
        while (times.back() + round <= loopEnd + 1e-9)
            times.push_back(times.back() + round);
    }
    return times;
}

bool KVXPlayAnimationBuilder::buildRotation(KVXAnimation* record, vpe::CSceneNode* node) const
{
    vpe::CAnimation* animation = createAnimation(record);
    if (KVXTowerCraneObject::Cast(m_document->GetItem(static_cast<PfDbHandle>(record->getObjId())))) {
        // A crane slews its jib and climbs by itself; the crane stays put.
        animation->SetFrameCallback(node, new KVXTowerRotateCallback(record, m_context.get()));
        return attach(record, animation);
    }
    const vpe::CVec3<double> centre = record->getCenterPt();
    vpe::CGroupNode* route = routeNodeOf(record, node, centre);
    if (!route)
        return false;
    vpe::CNodeTrack* track = animation->CreateNodeTrack(route);
    const std::vector<double> times = roundTimes(record);
    for (std::size_t i = 0; i < times.size(); ++i) {
        const double degrees = i % 2 == 0 ? record->getStartAngle() : record->getEndAngle();
        track->AddKeyFrame(turnAbout(times[i], centre, degrees, osg::Vec3d()));
    }
    return attach(record, animation);
}

bool KVXPlayAnimationBuilder::buildPath(KVXAnimation* record, vpe::CSceneNode* node) const
{
    std::vector<osg::Vec3d> path;
    for (const vpe::CVec3<double>& point : record->GetPoints())
        path.push_back(point);
    if (path.size() < 2)
        return false;
    const osg::Vec3d centre = record->getCenterPt();
    vpe::CGroupNode* route = routeNodeOf(record, node, centre);
    if (!route)
        return false;
    // Lengths along the path, so that the element keeps one speed.
    std::vector<double> along{0.0};
    for (std::size_t i = 1; i < path.size(); ++i)
        along.push_back(along.back() + (path[i] - path[i - 1]).length());
    if (along.back() <= 0.0)
        return false;
    vpe::CAnimation* animation = createAnimation(record);
    vpe::CNodeTrack* track = animation->CreateNodeTrack(route);
    // The element starts where it stands and turns with the path, keeping
    // the record's extra turn.
    const double firstHeading = headingOf(path[0], path[1]);
    const std::vector<double> times = roundTimes(record);
    for (std::size_t round = 0; round + 1 < times.size(); ++round) {
        const bool backwards = round % 2 == 1;
        for (std::size_t k = 0; k < path.size(); ++k) {
            const std::size_t i = backwards ? path.size() - 1 - k : k;
            const std::size_t from = i + 1 < path.size() ? i : i - 1;
            double heading = headingOf(path[from], path[from + 1]) - firstHeading;
            if (backwards)
                heading += 180.0;
            const double share = (backwards ? along.back() - along[i] : along[i]) / along.back();
            const double time = times[round] + (times[round + 1] - times[round]) * share;
            track->AddKeyFrame(
                turnAbout(time, centre, heading + record->getPathRotateAngel(), path[i] - path[0]));
        }
    }
    return attach(record, animation);
}

bool KVXPlayAnimationBuilder::buildEmphasis(KVXAnimation* record, vpe::CSceneNode* node) const
{
    vpe::CAnimation* animation = createAnimation(record);
    animation->SetFrameCallback(node, new KVXAntiColorCallback(node, record, m_context.get()));
    return attach(record, animation);
}

vpe::CGroupNode* KVXPlayAnimationBuilder::routeNodeOf(KVXAnimation* record, vpe::CSceneNode* node,
                                                     const osg::Vec3d& centre)
{
    auto* route = dynamic_cast<vpe::CGroupNode*>(record->getRouteNode());
    auto* pivot = route && route->getNumChildren() == 1 ? dynamic_cast<vpe::CGroupNode*>(route->getChild(0)) : nullptr;
    if (!pivot || !pivot->containsNode(node)) {
        if (node->getNumParents() == 0)
            return nullptr;
        osg::Group* parent = node->getParent(0);
        const vpe::CRefPtr<vpe::CSceneNode> keep = node;
        vpe::CRefPtr<vpe::CGroupNode> made = new vpe::CGroupNode;
        made->setName("kvx_route_node");
        pivot = new vpe::CGroupNode;
        pivot->setName("kvx_route_pivot");
        made->addChild(pivot);
        parent->addChild(made.get());
        parent->removeChild(node);
        pivot->addChild(node);
        record->setRouteParentNode(parent);
        record->setRouteNode(made.get());
        route = made.get();
        // Until the track moves it, the element stands where it stood.
        route->setMatrix(osg::Matrixd::translate(centre));
    }
    pivot->setMatrix(osg::Matrixd::translate(-centre));
    return route;
}
