#include "KVXScheduleScene.h"

#include "KVXAnimation.h"

#include "effects/KVXAnimPlaneVisitor.h"
#include "host/model/PfGsUtility.h"
#include "host/vpe/render/CViewer.h"

#include <osg/ComputeBoundsVisitor>

namespace {

// Clip plane indices of the cut effects.
constexpr int kConstructionPlane = 0;
constexpr int kDemolitionPlane = 1;
// How far beyond the element a plane goes to cut it whole.
constexpr double kClearance = 2.0;

void setPlane(osg::Node* node, const KVXAnimPlane& plane, int index)
{
    KVXAnimPlaneVisitor visitor(&plane, false, index);
    node->accept(visitor);
}

void removePlane(osg::Node* node, int index)
{
    KVXAnimPlaneVisitor visitor(nullptr, true, index);
    node->accept(visitor);
}

// The plane behind the element's far face in its direction of demolition,
// keeping nothing of it.
KVXAnimPlane demolishedPlane(const KVXAnimation* record, const osg::BoundingBox& box)
{
    const osg::Vec3d c = box.center();
    const osg::Vec3d s = box._max - box._min;
    const double endZ = record->getAnimEndPoint().z();
    switch (record->getTranslationType()) {
    case KVXAnimation::LeftToRight: return {{c.x() + s.x() / 2 + kClearance, c.y(), c.z()}, {1, 0, 0}};
    case KVXAnimation::RightToLeft: return {{c.x() - s.x() / 2 - kClearance, c.y(), c.z()}, {-1, 0, 0}};
    case KVXAnimation::FrontToBack: return {{c.x(), c.y() + s.y() / 2 + kClearance, c.z()}, {0, 1, 0}};
    case KVXAnimation::BackToFront: return {{c.x(), c.y() - s.y() / 2 - kClearance, c.z()}, {0, -1, 0}};
    case KVXAnimation::BottomUp: return {{c.x(), c.y(), endZ + kClearance}, {0, 0, 1}};
    case KVXAnimation::TopDown: return {{c.x(), c.y(), endZ - kClearance}, {0, 0, -1}};
    }
    return {{0, 0, 0}, {0, 0, 1}};
}

void removeOverlay(KVXAnimation* record)
{
    vpe::CSceneNode* overlay = record->getAntiNode();
    if (!overlay)
        return;
    while (overlay->getNumParents() > 0)
        overlay->getParent(0)->removeChild(overlay);
    record->setAntiNode(nullptr);
}

} // namespace

void KVXScheduleScene::HideUnbuilt(const std::vector<KVXAnimation*>& records)
{
    // Keyed by the id as a 32-bit number, as the schedule always has.
    std::map<int, KVXAnimation*> earliest;
    for (KVXAnimation* record : records) {
        const int type = record->getAnimationType();
        if (type != KVXAnimation::Construction && type != KVXAnimation::Demolition)
            continue;
        const auto key = static_cast<int>(record->getObjId());
        auto it = earliest.find(key);
        if (it == earliest.end())
            earliest.emplace(key, record);
        else if (record->getStartDate() < it->second->getStartDate())
            it->second = record;
    }
    const KVXAnimPlane belowEverything{{0, 0, -1000000.0}, {0, 0, -1.0}};
    for (const auto& entry : earliest) {
        KVXAnimation* record = entry.second;
        vpe::CSceneNode* node = record->getAnimationType() == KVXAnimation::Construction ? record->getNode() : nullptr;
        if (node)
            setPlane(node, belowEverything, kConstructionPlane);
    }
    markViewerDirty();
}

void KVXScheduleScene::Finish(KVXAnimation* record)
{
    vpe::CSceneNode* node = record ? record->getNode() : nullptr;
    if (!node)
        return;
    const int type = record->getAnimationType();
    if (type == KVXAnimation::Construction || type == KVXAnimation::Demolition) {
        if (record->getLoopPlayback()) {
            // As the schedule has always tested it: with start <= end <= loop
            // end both numbers are <= 0 and the test never returns.
            const auto a = static_cast<int>(record->getEndDate().daysTo(record->getStartDate()));
            const auto b = static_cast<int>(record->getLoopEndDate().daysTo(record->getStartDate()));
            if (a != 0 && b % a > 0)
                return;
        }
        if (type == KVXAnimation::Construction) {
            removePlane(node, kConstructionPlane);
            return;
        }
        osg::ComputeBoundsVisitor bounds;
        node->accept(bounds);
        const osg::BoundingBox& box = bounds.getBoundingBox();
        if (!box.valid())
            return;
        setPlane(node, demolishedPlane(record, box), kDemolitionPlane);
    } else if (type == KVXAnimation::Emphasis) {
        // An emphasis ends with the element as it looks without one.
        removeOverlay(record);
    }
    markViewerDirty();
}

void KVXScheduleScene::Restore(const std::map<int, KVXAnimation*>& recordsByNumber)
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer || !PfGsUtility::ActiveView())
        return;
    for (const auto& entry : recordsByNumber) {
        KVXAnimation* record = entry.second;
        vpe::CSceneNode* node = record->getNode();
        if (!node)
            continue;
        switch (record->getAnimationType()) {
        case KVXAnimation::Construction:
        case KVXAnimation::Demolition:
            // Both indices: a layered record leaves its lower bound on the
            // construction plane's index whatever its kind.
            removePlane(node, kConstructionPlane);
            removePlane(node, kDemolitionPlane);
            break;
        case KVXAnimation::Path:
        case KVXAnimation::Rotation: record->resumeNodeOfRouteAnimation(); break;
        case KVXAnimation::Emphasis: removeOverlay(record); break;
        }
    }
    if (vpe::CLight* sun = viewer->GetScene()->FindLight(vpe::CScene::kShadowLightName))
        sun->SetShadowDirty(true);
    viewer->SetDirty();
}

void KVXScheduleScene::markViewerDirty()
{
    if (vpe::CViewer* viewer = PfGsUtility::CurrentViewer())
        viewer->SetDirty();
}
