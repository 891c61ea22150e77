// Evaluating the construction records of a large schedule, one frame at a
// time, rendering excluded: 10,000 records, each cutting a storey of about
// 1,000 triangles, a third of them under way at the moment evaluated.
//
// Reported: a frame held at one moment (a paused or frozen schedule drawn
// again: no plane moves), a playing frame (every plane under way moves), and
// the caps of the records under way made from scratch, as an evaluation
// that keeps nothing between frames would make them every frame.

#include "animation/KVXAnimationNames.h"
#include "animation/KVXAnimatorManager.h"
#include "animation/KVXEntryPoint.h"
#include "effects/KVXAnimTransCallback.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfHostClasses.h"
#include "host/model/PfOptionContainer.h"
#include "host/vpe/geometry/CBooleanOperate.h"
#include "host/vpe/geometry/CPlane.h"
#include "host/vpe/geometry/CSection.h"
#include "host/vpe/geometry/GBodyBuilder.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CPrimitiveRenderable.h"
#include "keyframe/KVXDateAnimationClockTimer.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>
#include <vector>

namespace {

constexpr int kRecords = 10000;
constexpr int kFrames = 24;
constexpr double kTargetMs = 16.0;
constexpr double kTargetRatio = 10.0;
const QDate kFirstDay(2025, 1, 1);
constexpr int kMoment = 200; // days after the first: the moment evaluated

// A 40 m x 20 m storey, its outline divided every 480 mm: 250 corners, 996
// triangles.
vpe::CBody* storey(double x, double y)
{
    std::vector<osg::Vec2d> outline;
    const osg::Vec2d corners[] = {{0, 0}, {40000, 0}, {40000, 20000}, {0, 20000}};
    for (int side = 0; side < 4; ++side) {
        const osg::Vec2d a = corners[side], b = corners[(side + 1) % 4];
        const int steps = (b - a).length() > 30000 ? 83 : 42;
        for (int k = 0; k < steps; ++k)
            outline.push_back(osg::Vec2d(x, y) + a + (b - a) * (double(k) / steps));
    }
    return vpe::CBody::CreateExtrusion(outline, 0.0, 3000.0);
}

struct Schedule {
    std::vector<KVXAnimation*> underWay;
    std::vector<KVX3DElementObject*> underWayElements;
};

Schedule buildSchedule(PfDbDocument* document)
{
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    const KVXAnimation::TranslationType directions[] = {KVXAnimation::BottomUp, KVXAnimation::LeftToRight,
                                                        KVXAnimation::FrontToBack, KVXAnimation::TopDown};
    Schedule schedule;
    for (int i = 0; i < kRecords; ++i) {
        auto* element = new KVX3DElementObject();
        element->AddBody(storey((i % 100) * 50000.0, (i / 100) * 30000.0));
        document->GetDatabase()->GetModelSpace()->Add(element);
        KVXAnimation* record = manager->addKvxAnimation(static_cast<qint64>(element->GetHandle()),
                                                        KVXAnimation::Construction, directions[(i / 3) % 4]);
        // Under way, finished, not begun.
        const int start = i % 3 == 0 ? kMoment - 5 - i % 20 : i % 3 == 1 ? kMoment - 60 : kMoment + 10;
        record->setStartDate(kFirstDay.addDays(start));
        record->setEndDate(kFirstDay.addDays(start + 30));
        if (i % 3 == 0) {
            schedule.underWay.push_back(record);
            schedule.underWayElements.push_back(element);
        }
    }
    manager->updateAllAnimationsDateRange();
    return schedule;
}

std::vector<vpe::CRefPtr<KVXAnimTransCallback>>& callbacks()
{
    static std::vector<vpe::CRefPtr<KVXAnimTransCallback>> all;
    return all;
}

// Caps made anew and caps moved, over all records so far.
std::pair<int, int> capWork()
{
    std::pair<int, int> work{0, 0};
    for (const auto& callback : callbacks()) {
        work.first += callback->GetCap().BuildCount();
        work.second += callback->GetCap().MoveCount();
    }
    return work;
}

void playAll(vpe::CViewer* viewer, KVXDateAnimationClockTimer* clock)
{
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    vpe::CAnimationManager* engine = viewer->GetAnimationManager();
    const vpe::CRefPtr<KVXEffectContext> context =
        new KVXEffectContext(PfDocManagerPtr()->CurrentDocument(), viewer, manager->getTimeScale());
    for (KVXAnimation* record : manager->getAnimationVector()) {
        const std::string name = std::to_string(record->getNumber());
        vpe::CAnimation* animation = engine->CreateAnimation(name, manager->getAllAnimationsTimeLength());
        callbacks().push_back(new KVXAnimTransCallback(record, context.get()));
        animation->SetFrameCallback(record->getNode(), callbacks().back().get());
        vpe::CAnimator* animator = engine->CreateAnimator(name, animation, clock);
        animator->Enable();
        record->setAnimation(animation);
        record->setAnimator(animator);
    }
}

double millisecondsPerFrame(vpe::CViewer* viewer, KVXDateAnimationClockTimer* clock, double start, double step)
{
    clock->FreezeAtTime(start);
    viewer->AdvanceFrame();
    QElapsedTimer timer;
    timer.start();
    for (int frame = 1; frame <= kFrames; ++frame) {
        clock->FreezeAtTime(start + frame * step);
        viewer->AdvanceFrame();
    }
    return timer.nsecsElapsed() / 1e6 / kFrames;
}

// What a frame costs when every cap under way is made anew: split, cover,
// tessellate and make the renderables, as nothing were kept.
double scratchCapsMilliseconds(const Schedule& schedule, double moment)
{
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    const PfOptionContainer* options = PfOptionContainer::GetInstance();
    QElapsedTimer timer;
    timer.start();
    std::size_t triangles = 0;
    for (std::size_t i = 0; i < schedule.underWay.size(); ++i) {
        const KVXAnimation* record = schedule.underWay[i];
        const KVX3DElementObject* element = schedule.underWayElements[i];
        const double start = manager->getAnimationTimeAtDate(record->getStartDate());
        const double end = manager->getAnimationTimeAtDate(record->getEndDate());
        const double fraction = (moment - start) / (end - start);
        const osg::BoundingBoxd box = element->GetFirstBody()->GetBoundingBox();
        osg::Vec3d point = box.center();
        osg::Vec3d normal(0, 0, -1);
        switch (record->getTranslationType()) {
        case KVXAnimation::LeftToRight: point.x() = box.xMin() + (box.xMax() - box.xMin()) * fraction; normal = {-1, 0, 0}; break;
        case KVXAnimation::FrontToBack: point.y() = box.yMin() + (box.yMax() - box.yMin()) * fraction; normal = {0, -1, 0}; break;
        case KVXAnimation::TopDown: point.z() = box.zMax() - (box.zMax() - box.zMin()) * fraction; normal = {0, 0, 1}; break;
        default: point.z() = box.zMin() + (box.zMax() - box.zMin()) * fraction; break;
        }
        const vpe::CPlane plane(point, normal);
        vpe::CRefPtr<vpe::CBody> positive, negative;
        vpe::CSection section;
        if (!vpe::CBooleanOperate(true, true, true, true).SplitBody(*element->GetFirstBody(), plane, positive, negative,
                                                                   section))
            continue;
        const vpe::CRefPtr<vpe::CBody> shell = vpe::GBodyBuilder::CreateShell(section, plane, true, false);
        std::vector<osg::Vec3f> vertices, normals, edges;
        element->tessellateShell(*shell, options->GetDistEpsilonCoefficient(), options->GetAngleEpsilonCoefficient(),
                                 vertices, normals, edges);
        vpe::CRefPtr<vpe::CPrimitiveRenderable> faces = new vpe::CPrimitiveRenderable(false);
        faces->SetPrimitives(vpe::CPrimitiveRenderable::Triangles, vertices, normals);
        vpe::CRefPtr<vpe::CPrimitiveRenderable> lines = new vpe::CPrimitiveRenderable(false);
        lines->SetPrimitives(vpe::CPrimitiveRenderable::Lines, edges);
        triangles += vertices.size() / 3;
    }
    const double ms = timer.nsecsElapsed() / 1e6;
    std::printf("  (%zu cap triangles made from scratch)\n", triangles);
    return ms;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    PfHostRegisterClasses();
    PfRxEntryPoint(1, nullptr);
    PfDbDocument* document = PfDocManagerPtr()->NewDocument();
    // The view first: records take their elements' elevations from it.
    PfGsModelView* view = PfGsModelView::Attach(document);
    const Schedule schedule = buildSchedule(document);
    vpe::CViewer* viewer = view->GetViewer();
    KVXDateAnimationClockTimer* clock =
        KVXDateAnimationClockTimer::GetOrCreate(KVXAnimationNames::kDateAnimationClockTimer);
    playAll(viewer, clock);
    const double moment = KVXAnimatorManager::getInstance()->getAnimationTimeAtDate(kFirstDay.addDays(kMoment));
    std::printf("%d construction records, %zu under way\n", kRecords, schedule.underWay.size());

    const double held = millisecondsPerFrame(viewer, clock, moment, 0.0);
    const std::pair<int, int> before = capWork();
    const double playing = millisecondsPerFrame(viewer, clock, moment, 1.0 / 24.0);
    const std::pair<int, int> after = capWork();
    std::printf("  (playing: %.0f caps made anew and %.0f moved a frame)\n",
                double(after.first - before.first) / (kFrames + 1), double(after.second - before.second) / (kFrames + 1));
    const double scratch = scratchCapsMilliseconds(schedule, moment);
    const double fromScratch = held + scratch;
    std::printf("held frame: %.2f ms, %.2f of the %.0f ms target\n", held, held / kTargetMs, kTargetMs);
    std::printf("playing frame (every plane under way moves): %.2f ms, %.2f of the target\n", playing,
                playing / kTargetMs);
    std::printf("caps from scratch every frame: %.2f ms a frame; held frame %.1fx faster (target %.0fx), playing "
                "frame %.1fx\n",
                fromScratch, fromScratch / held, kTargetRatio, fromScratch / playing);
    return 0;
}
