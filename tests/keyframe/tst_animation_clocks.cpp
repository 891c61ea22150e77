#include "animation/KVXAnimationNames.h"
#include "animation/KVXAnimatorManager.h"
#include "forms/KVXDateTimeLineWidget.h"
#include "host/app/PfQtView.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfGsModelView.h"
#include "host/vpe/animation/CClockTimerManager.h"
#include "host/vpe/render/CViewer.h"
#include "keyframe/KVXAnimationTimeLineWidget.h"
#include "keyframe/KVXCameraAnimationClockTimer.h"
#include "keyframe/KVXCameraKeyFramesTrack.h"
#include "keyframe/KVXCameraPlayAnimable.h"
#include "keyframe/KVXDateAnimationClockTimer.h"
#include "keyframe/KVXDateKeyFramesTrack.h"
#include "keyframe/KVXKeyFrameAnimationManager.h"
#include "keyframe/PfApGrxEventFilter.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QPaintEvent>

#include <gtest/gtest.h>

// Stands in for both timelines; its calls are also counted where the test
// can still read them once the probe is gone.
class IndicatorProbe : public QObject, public KVXTimeIndicator, public KVXDateIndicator {
    Q_OBJECT
public:
    explicit IndicatorProbe(int* tally = nullptr) : m_tally(tally) {}
    void SetTimeIndicator(unsigned int milliseconds) override
    {
        timeIndicator = milliseconds;
        count();
    }
    void SetIndicator(const QDate& date) override
    {
        dateIndicator = date;
        count();
    }

    unsigned int timeIndicator = 0;
    QDate dateIndicator;
    int calls = 0;

private:
    void count()
    {
        ++calls;
        if (m_tally)
            ++*m_tally;
    }
    int* m_tally;
};

namespace {

// Clocks live on the current viewer: a document with a view, and the
// key-frame manager set up on it.
class AnimationClocks : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        viewer = PfGsModelView::Attach(document)->GetViewer();
        keyFrames->InitAnimationData();
        camera = keyFrames->GetCameraAnimationClockTimer();
        date = keyFrames->GetDateAnimationClockTimer();
        ASSERT_TRUE(camera && date);
    }
    void TearDown() override
    {
        keyFrames->UnInitAnimationData();
        PfDocManagerPtr()->CloseAll();
    }
    // One frame's worth of time for every timer of the viewer's clock.
    void tick(double seconds = 0.5) { viewer->GetClock()->Tick(seconds); }

    KVXKeyFrameAnimationManager* keyFrames = KVXKeyFrameAnimationManager::GetInstance();
    PfDbDocument* document = nullptr;
    vpe::CViewer* viewer = nullptr;
    KVXCameraAnimationClockTimer* camera = nullptr;
    KVXDateAnimationClockTimer* date = nullptr;
};

TEST_F(AnimationClocks, aFreezeRunsTwoTicksThenPausesWithoutMoving)
{
    camera->FreezeAtTime(5.0);
    tick();
    tick();
    EXPECT_FALSE(camera->IsPaused());
    EXPECT_DOUBLE_EQ(camera->GetValue(), 5.0);
    tick();
    EXPECT_TRUE(camera->IsPaused());
    EXPECT_TRUE(camera->IsFrozen());
    EXPECT_DOUBLE_EQ(camera->GetValue(), 5.0);

    // Still frozen: running again pauses on the next tick.
    camera->Pause(false);
    tick();
    EXPECT_TRUE(camera->IsPaused());
    camera->SetFrozen(false);
    camera->Pause(false);
    tick(0.25);
    EXPECT_DOUBLE_EQ(camera->GetValue(), 5.25);
}

TEST_F(AnimationClocks, rewindPausesAtZeroAndKeepsTheEndTime)
{
    camera->SetEndTime(12.0);
    camera->SetWrapAtEnd(true);
    camera->FreezeAtTime(3.0);
    camera->Rewind();
    EXPECT_TRUE(camera->IsPaused());
    EXPECT_FALSE(camera->IsFrozen());
    EXPECT_FALSE(camera->GetWrapAtEnd());
    EXPECT_EQ(camera->GetValue(), 0.0);
    EXPECT_EQ(camera->GetEndTime(), 12.0);
}

TEST_F(AnimationClocks, wrapFallsBackToZeroOnlyPastTheEnd)
{
    date->SetEndTime(1.0);
    date->SetWrapAtEnd(true);
    date->Pause(false);
    tick(1.0);
    EXPECT_DOUBLE_EQ(date->GetValue(), 1.0) << "exactly at the end is not past it";
    tick(0.25);
    EXPECT_EQ(date->GetValue(), 0.0);
}

TEST_F(AnimationClocks, cameraClockMovesTheTimelineInWholeMilliseconds)
{
    IndicatorProbe timeline;
    camera->SetTimeLineWidget(&timeline);
    camera->Pause(false);
    tick(1.2345);
    EXPECT_EQ(timeline.timeIndicator, 1234u);

    camera->FreezeAtTime(3.0);
    const int calls = timeline.calls;
    tick();
    EXPECT_EQ(timeline.calls, calls) << "a frozen clock leaves the indicator";
    camera->SetTimeLineWidget(nullptr);
}

TEST_F(AnimationClocks, cameraClockStopsTheAnimationOnlyPastItsEnd)
{
    camera->SetEndTime(10.0);
    camera->Pause(false);
    tick(10.0);
    EXPECT_FALSE(camera->IsPaused()) << "exactly at the end it goes on";
    EXPECT_DOUBLE_EQ(camera->GetValue(), 10.0);
    tick(0.1);
    EXPECT_TRUE(camera->IsPaused()) << "stopped: rewound and paused";
    EXPECT_EQ(camera->GetValue(), 0.0);
    EXPECT_EQ(keyFrames->GetPlayState(), KVXKeyFrameAnimationManager::Stopped);

    camera->SetEndTime(0.0);
    camera->Pause(false);
    tick(100.0);
    EXPECT_FALSE(camera->IsPaused()) << "without an end it never stops by itself";
}

struct DateCase {
    QDate start;
    QDate end;
    double endTime;
    QDate date;
    double time;     // TimeForDate(date)
    double askTime;  // DateForTime(askTime)...
    QDate answer;    // ... gives this
};

TEST_F(AnimationClocks, dateMathsMapsLinearlyAndTruncates)
{
    const DateCase cases[] = {
        {{2020, 1, 1}, {2020, 1, 11}, 20.0, {2020, 1, 6}, 10.0, 3.9, {2020, 1, 2}},
        {{2020, 1, 1}, {2020, 1, 11}, 20.0, {2019, 12, 31}, -2.0, 25.0, {2020, 1, 13}},
        {{2020, 1, 1}, {2020, 1, 11}, 20.0, {2020, 1, 21}, 40.0, -3.0, {2019, 12, 31}},
        {{2020, 3, 5}, {2020, 3, 5}, 20.0, {2021, 1, 1}, 0.0, 7.0, {2020, 3, 5}},
        {{2020, 1, 1}, {2020, 1, 11}, 0.0005, {2020, 1, 6}, 0.00025, 0.0004, {2020, 1, 1}},
    };
    for (const DateCase& c : cases) {
        date->SetDateRange(c.start, c.end);
        date->SetEndTime(c.endTime);
        EXPECT_DOUBLE_EQ(date->TimeForDate(c.date), c.time) << c.date.toString(Qt::ISODate).toStdString();
        EXPECT_EQ(date->DateForTime(c.askTime), c.answer) << c.askTime;
    }
}

TEST_F(AnimationClocks, freezeAtDateHoldsTheTimeOfThatDate)
{
    date->SetDateRange({2020, 1, 1}, {2020, 1, 11});
    date->SetEndTime(20.0);
    date->FreezeAtDate({2020, 1, 4});
    EXPECT_DOUBLE_EQ(date->GetValue(), 6.0);
    EXPECT_TRUE(date->IsFrozen());
    EXPECT_FALSE(date->IsPaused());
    for (int i = 0; i < 3; ++i)
        tick();
    EXPECT_TRUE(date->IsPaused());
    EXPECT_DOUBLE_EQ(date->GetValue(), 6.0);
}

TEST_F(AnimationClocks, runningDateClockMovesTheDateLineAndAsksForFrames)
{
    IndicatorProbe dateLine;
    date->SetDateTimeLineWidget(&dateLine);
    date->SetDateRange({2020, 1, 1}, {2020, 1, 11});
    date->SetEndTime(10.0);

    viewer->SetDirty(false);
    tick();
    EXPECT_EQ(dateLine.calls, 0) << "paused: nothing moves";
    EXPECT_FALSE(viewer->IsDirty());

    date->Pause(false);
    tick(2.5);
    EXPECT_EQ(dateLine.dateIndicator, QDate(2020, 1, 3));
    EXPECT_TRUE(viewer->IsDirty());
    date->SetDateTimeLineWidget(nullptr);
}

TEST_F(AnimationClocks, timelinesThatAreGoneAreNeverCalledAndLiveOnesMove)
{
    int callsToGone = 0;
    auto* gone = new IndicatorProbe(&callsToGone);
    camera->SetTimeLineWidget(gone);
    date->SetDateTimeLineWidget(gone);
    auto* goneTimeLine = new KVXAnimationTimeLineWidget;
    auto* goneDateLine = new KVXDateTimeLineWidget;
    KVXKeyFrameAnimationManager::SetDateLineWidget(goneDateLine);
    KVXKeyFrameAnimationManager::SetTimeLineWidget(goneTimeLine);
    delete gone;
    delete goneTimeLine;
    delete goneDateLine;
    EXPECT_EQ(KVXKeyFrameAnimationManager::GetDateLineWidget(), nullptr);
    EXPECT_EQ(KVXKeyFrameAnimationManager::GetTimeLineWidget(), nullptr);
    camera->Pause(false);
    date->Pause(false);
    tick();
    keyFrames->StopAnimation();
    EXPECT_EQ(callsToGone, 0);

    // Set through the manager, as the application does: the clocks it sets
    // up move them.
    KVXAnimationTimeLineWidget timeLine;
    KVXDateTimeLineWidget dateLine;
    KVXKeyFrameAnimationManager::SetTimeLineWidget(&timeLine);
    KVXKeyFrameAnimationManager::SetDateLineWidget(&dateLine);
    keyFrames->InitAnimationData();
    date = keyFrames->GetDateAnimationClockTimer();
    date->SetDateRange({2020, 1, 1}, {2020, 1, 11});
    date->SetEndTime(10.0);
    keyFrames->GetCameraAnimationClockTimer()->Pause(false);
    date->Pause(false);
    tick(2.0);
    EXPECT_EQ(timeLine.GetTimeIndicator(), 2000u);
    EXPECT_EQ(dateLine.GetIndicator(), QDate(2020, 1, 3));
    KVXKeyFrameAnimationManager::SetTimeLineWidget(nullptr);
    KVXKeyFrameAnimationManager::SetDateLineWidget(nullptr);
}

TEST(AnimationClocksOfTwoDocuments, theFirstDocumentsLiveClockIsKeptUntilItsViewerGoes)
{
    PfDbDocument* first = PfDocManagerPtr()->NewDocument();
    PfGsModelView::Attach(first);
    KVXDateAnimationClockTimer* clock = KVXDateAnimationClockTimer::GetOrCreate("kvx_test_date_clock");
    ASSERT_NE(clock, nullptr);
    clock->SetEndTime(30.0);
    clock->SetDateRange({2020, 1, 1}, {2020, 1, 31});

    PfDbDocument* second = PfDocManagerPtr()->NewDocument();
    vpe::CViewer* secondViewer = PfGsModelView::Attach(second)->GetViewer();
    ASSERT_EQ(KVXDateAnimationClockTimer::GetOrCreate("kvx_test_date_clock"), clock);
    EXPECT_EQ(clock->GetEndTime(), 30.0);
    EXPECT_EQ(clock->GetEndDate(), QDate(2020, 1, 31));

    PfDocManagerPtr()->CloseDocument(first);
    PfDocManagerPtr()->SetCurrentDocument(second);
    KVXDateAnimationClockTimer* fresh = KVXDateAnimationClockTimer::GetOrCreate("kvx_test_date_clock");
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(fresh->GetClock(), secondViewer->GetClock()) << "the one left on a gone viewer is replaced";
    vpe::CClockTimerManager::GetInstance()->Remove("kvx_test_date_clock");
    PfDocManagerPtr()->CloseAll();
}

TEST_F(AnimationClocks, dateClockFollowsTheCameraThroughDateKeyFrames)
{
    KVXDateKeyFramesTrack* track = keyFrames->GetDateKeyFramesTrack();
    ASSERT_NE(track, nullptr);
    date->SetDateRange({2020, 1, 1}, {2020, 1, 11});
    date->SetEndTime(20.0);

    track->CreateDateKeyFrame(0)->SetDate({2020, 1, 1});
    EXPECT_DOUBLE_EQ(keyFrames->UpdateDateClockTimerByCameraClockTimer(7.0), 7.0) << "one date key frame";

    track->CreateDateKeyFrame(4000)->SetDate({2020, 1, 5});
    EXPECT_DOUBLE_EQ(keyFrames->UpdateDateClockTimerByCameraClockTimer(7.0), 7.0) << "camera clock paused";

    camera->Pause(false);
    tick(2.0);
    // Halfway between 1 and 5 January: the 3rd, 4 seconds into the range.
    EXPECT_DOUBLE_EQ(date->GetValue(), 4.0);
    EXPECT_FALSE(date->IsPaused()) << "following un-pauses the date clock";
    tick(1.0);
    EXPECT_DOUBLE_EQ(date->GetValue(), 6.0);
    tick(3.0);
    EXPECT_DOUBLE_EQ(date->GetValue(), 8.0) << "after the last key frame its date holds";

    camera->FreezeAtTime(4.0);
    tick();
    EXPECT_TRUE(date->IsFrozen()) << "a frozen camera freezes the dates";
    EXPECT_DOUBLE_EQ(date->GetValue(), 8.0);
}

TEST_F(AnimationClocks, theDatesFollowAnEditOfTheDateKeyFramesAtOnce)
{
    KVXDateKeyFramesTrack* track = keyFrames->GetDateKeyFramesTrack();
    date->SetDateRange({2020, 1, 1}, {2020, 1, 11});
    date->SetEndTime(20.0);
    track->CreateDateKeyFrame(0)->SetDate({2020, 1, 1});
    KVXDateKeyFrame* fifth = track->CreateDateKeyFrame(4000);
    fifth->SetDate({2020, 1, 5});
    camera->Pause(false);
    tick(2.0);
    ASSERT_DOUBLE_EQ(date->GetValue(), 4.0);
    track->RemoveKeyFrame(static_cast<qint64>(fifth->GetHandle()));
    tick(0.5);
    EXPECT_DOUBLE_EQ(date->GetValue(), 4.5) << "one date key frame left: the date clock runs by itself";
}

TEST_F(AnimationClocks, getOrCreateFindsTheRegisteredTimerOfItsClass)
{
    EXPECT_EQ(KVXCameraAnimationClockTimer::GetOrCreate(KVXAnimationNames::kCameraAnimationClockTimer), camera);
    vpe::CClockTimerManager* registry = vpe::CClockTimerManager::GetInstance();
    const std::size_t before = registry->Size();

    // A timer of another class under the name stays; a new one joins it.
    KVXDateAnimationClockTimer* dated =
        KVXDateAnimationClockTimer::GetOrCreate(KVXAnimationNames::kCameraAnimationClockTimer);
    ASSERT_NE(dated, nullptr);
    EXPECT_NE(static_cast<vpe::CClockTimer*>(dated), static_cast<vpe::CClockTimer*>(camera));
    EXPECT_EQ(registry->Size(), before + 1);
    EXPECT_EQ(registry->Find(KVXAnimationNames::kCameraAnimationClockTimer), camera);

    PfDocManagerPtr()->SetCurrentDocument(nullptr);
    EXPECT_EQ(KVXDateAnimationClockTimer::GetOrCreate("kvx_test_clock"), nullptr) << "no viewer, no clock";
    EXPECT_EQ(registry->Find("kvx_test_clock"), nullptr);
}

TEST_F(AnimationClocks, stopRewindsBothClocksAndDropsTheCameraAnimation)
{
    vpe::CAnimationManager* engine = viewer->GetAnimationManager();
    vpe::CAnimation* animation = engine->CreateAnimation(KVXAnimationNames::kCameraAnimationName, 8.0);
    engine->CreateAnimator(KVXAnimationNames::kCameraAnimationName, animation, camera)->Enable();
    camera->Pause(false);
    date->Pause(false);
    tick(2.0);
    keyFrames->StopAnimation();
    EXPECT_TRUE(camera->IsPaused());
    EXPECT_TRUE(date->IsPaused());
    EXPECT_EQ(camera->GetValue(), 0.0);
    EXPECT_EQ(date->GetValue(), 0.0);
    EXPECT_EQ(engine->FindAnimator(KVXAnimationNames::kCameraAnimationName), nullptr);
    EXPECT_EQ(engine->FindAnimation(KVXAnimationNames::kCameraAnimationName), nullptr);
}

TEST(CameraPlayAnimable, takesTheEyeFromTheRowAndTheAxesFromTheColumns)
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera();
    vpe::CRefPtr<KVXCameraPlayAnimable> animable = new KVXCameraPlayAnimable(camera.get());
    // Rows: x axis, y axis, z axis, translation (2, 4, 6) over w = 2; the
    // columns differ from the rows so that a transposed read shows.
    const osg::Matrixf m(0, 0, 1, 0,  //
                         1, 0, 0, 0,  //
                         0, 1, 0, 0,  //
                         2, 4, 6, 2);
    animable->ApplyMatrix(m);
    EXPECT_EQ(camera->GetPosition(), vpe::CVec3<float>(1, 2, 3));
    EXPECT_EQ(camera->GetDirection(), vpe::CVec3<float>(0, 0, 1));
    EXPECT_EQ(camera->GetUpDirection(), vpe::CVec3<float>(1, 0, 0));

    animable->SetDirectionLocked(true);
    animable->ApplyMatrix(osg::Matrixf::translate(7, 8, 9));
    EXPECT_EQ(camera->GetPosition(), vpe::CVec3<float>(7, 8, 9));
    EXPECT_EQ(camera->GetDirection(), vpe::CVec3<float>(0, 0, 1)) << "locked";
}

TEST(GraphicsEventFilter, swallowsHostRedrawsAndOnlyThe3DViewsPaints)
{
    PfApGrxEventFilter filter;
    vpe::CRefPtr<vpe::CViewer> viewer = new vpe::CViewer();
    PfQtView view(viewer.get());
    QObject other;
    QPaintEvent paint(QRect(0, 0, 10, 10));

    EXPECT_TRUE(filter.eventFilter(&view, &paint));
    EXPECT_FALSE(filter.eventFilter(&other, &paint));
    for (int type : {15001, 15005, 15010}) {
        QEvent event(static_cast<QEvent::Type>(type));
        EXPECT_TRUE(filter.eventFilter(&other, &event)) << type;
    }
    for (int type : {15000, 15011}) {
        QEvent event(static_cast<QEvent::Type>(type));
        EXPECT_FALSE(filter.eventFilter(&view, &event)) << type;
    }
}

} // namespace

#include "tst_animation_clocks.moc"
