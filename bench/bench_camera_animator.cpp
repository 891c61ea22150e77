// A long fly-through: 1,000 camera key frames, each with a date key frame,
// half a second apart. Timed: building the camera animation from them (as the
// first play after an edit does), and one play step (the clocks tick, the
// camera moves, the schedule's date follows the date key frames).

#include "animation/KVXAnimatorManager.h"
#include "animation/KVXEntryPoint.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfHostClasses.h"
#include "host/vpe/render/CViewer.h"
#include "keyframe/KVXCameraKeyFramesTrack.h"
#include "keyframe/KVXDateKeyFramesTrack.h"
#include "keyframe/KVXKeyFrameAnimationManager.h"

#include "tests/support/FixedStepTimeSource.h"

#include "MedianReporter.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>

namespace {

constexpr int kKeyFrames = 1000;
constexpr int kSpacingMs = 500;
constexpr double kBuildTargetMs = 10.0;
constexpr double kStepTargetMs = 0.1;
// Small steps, so that the timed run stays inside the fly-through.
constexpr double kStepSeconds = 0.00001;

// Made before the document has a view, so that no thumbnail is rendered:
// the key frames' pictures are not what is measured.
void buildFlyThrough(PfDbDocument* document)
{
    auto* block = new KVX3DElementObject();
    block->AddBody(vpe::CBody::CreateBox({0, 0, 0}, {10000, 10000, 30000}));
    document->GetDatabase()->GetModelSpace()->Add(block);
    KVXAnimation* record = KVXAnimatorManager::getInstance()->addKvxAnimation(
        static_cast<qint64>(block->GetHandle()), KVXAnimation::Construction, KVXAnimation::BottomUp);
    record->setStartDate(QDate(2025, 1, 1));
    record->setEndDate(QDate(2027, 12, 31));
    auto* cameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(document->GetDatabase());
    auto* dates = KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(document->GetDatabase());
    for (int i = 0; i < kKeyFrames; ++i) {
        const double angle = i * 0.05;
        vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
        camera->SetLookAt({40000 * std::cos(angle), 40000 * std::sin(angle), 20000.0 + 10 * i}, {5000, 5000, 10000});
        cameras->CreateCameraKeyFrame(i * kSpacingMs)->SetCamera(camera.get());
        KVXDateKeyFrame::Cast(dates->CreateKeyFrame(i * kSpacingMs))->SetDate(QDate(2025, 1, 1).addDays(i));
    }
}

void BM_BuildCameraAnimation(benchmark::State& state)
{
    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    for (auto _ : state) {
        manager->SetCameraAnimationDirty();
        manager->PlayAnimation();
    }
    if (manager->GetPlayState() != KVXKeyFrameAnimationManager::Playing)
        state.SkipWithError("nothing plays");
}

vpe::CViewer*& viewer()
{
    static vpe::CViewer* shown = nullptr;
    return shown;
}

void BM_PlayStep(benchmark::State& state)
{
    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    manager->StopAnimation();
    manager->PlayAnimation();
    for (auto _ : state) {
        viewer()->GetClock()->Tick(kStepSeconds);
        viewer()->AdvanceFrame();
    }
    if (manager->GetPlayState() != KVXKeyFrameAnimationManager::Playing)
        state.SkipWithError("the fly-through ended while timed");
}

BENCHMARK(BM_BuildCameraAnimation)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(BM_PlayStep)->Unit(benchmark::kMicrosecond)->UseRealTime()->Repetitions(5)->ReportAggregatesOnly();

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    PfHostRegisterClasses();
    PfRxEntryPoint(1, nullptr);
    benchmark::Initialize(&argc, argv);
    PfDbDocument* document = PfDocManagerPtr()->NewDocument();
    buildFlyThrough(document);
    viewer() = PfGsModelView::Attach(document)->GetViewer();
    viewer()->SetTimeSource(new FixedStepTimeSource);
    KVXKeyFrameAnimationManager::GetInstance()->InitAnimationData();
    std::printf("%d camera and %d date key frames, %.0f s of fly-through\n", kKeyFrames, kKeyFrames,
                KVXKeyFrameAnimationManager::GetInstance()->getAnimationVideoLength());
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double build = reporter.medians["BM_BuildCameraAnimation"];
    const double step = reporter.medians["BM_PlayStep"] / 1000.0;
    std::printf("camera animation from %d key frames: %.3f ms, %.2f of the %.0f ms target\n", kKeyFrames, build,
                build / kBuildTargetMs, kBuildTargetMs);
    std::printf("play step: %.2f us, %.4f of the %.1f ms target\n", step * 1000.0, step / kStepTargetMs, kStepTargetMs);
    return 0;
}
