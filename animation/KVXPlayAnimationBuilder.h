#pragma once

#include "KVXScheduleTimeScale.h"

#include "effects/KVXEffectContext.h"
#include "host/vpe/scene/CGroupNode.h"
#include "host/vpe/scene/CSceneNode.h"

#include <osg/Vec3d>

#include <vector>

class KVXAnimation;
class PfDbDocument;

namespace vpe {
class CAnimation;
class CClockTimer;
class CNodeTrack;
class CViewer;
} // namespace vpe

// Makes the engine animation that plays one schedule record on the shared
// date clock: cut planes for construction and demolition (layer by layer
// when the record asks), a swing about the element's centre for rotation
// (the crane's own slewing and climbing for a tower crane), a drive along
// the record's polyline for a path, blinking for emphasis. Every record's
// animation lasts the whole schedule; its callback or track decides from the
// clock's date what to show. The callbacks share one context: the document,
// the viewer and the time scale given here.
class KVXPlayAnimationBuilder {
public:
    KVXPlayAnimationBuilder(PfDbDocument* document, vpe::CViewer* viewer, vpe::CClockTimer* dateClock,
                            const KVXScheduleTimeScale* timeScale, double scheduleLength);

    // The animation and its animator (both named by the record's number),
    // enabled and kept in the record. False when the record's element or
    // node is missing, or its kind plays nothing.
    bool Build(KVXAnimation* record) const;

private:
    vpe::CAnimation* createAnimation(const KVXAnimation* record) const;
    bool attach(KVXAnimation* record, vpe::CAnimation* animation) const;
    bool buildCut(KVXAnimation* record, vpe::CSceneNode* node) const;
    bool buildRotation(KVXAnimation* record, vpe::CSceneNode* node) const;
    bool buildPath(KVXAnimation* record, vpe::CSceneNode* node) const;
    bool buildEmphasis(KVXAnimation* record, vpe::CSceneNode* node) const;
    // The group the element's node is moved by: the record's route node,
    // put between the node and its parent when it is not there yet, over a
    // pivot that brings the centre to the origin.
    static vpe::CGroupNode* routeNodeOf(KVXAnimation* record, vpe::CSceneNode* node, const osg::Vec3d& centre);
    // The times of the record's rounds: start to end, and with a loop on,
    // more rounds of the same length up to the loop end (every other one
    // backwards, so that nothing jumps).
    std::vector<double> roundTimes(const KVXAnimation* record) const;

    PfDbDocument* m_document;
    vpe::CViewer* m_viewer;
    vpe::CClockTimer* m_dateClock;
    const KVXScheduleTimeScale* m_timeScale;
    double m_scheduleLength;
    vpe::CRefPtr<KVXEffectContext> m_context;
};
