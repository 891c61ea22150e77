#include "host/db/PfDocManager.h"
#include "host/model/PfGsModelView.h"
#include "host/vpe/animation/CCameraAnimable.h"
#include "host/vpe/animation/CClockTimerManager.h"
#include "host/vpe/animation/CVideoRecorderTimeSource.h"
#include "host/vpe/core/CQuaternion.h"
#include "host/vpe/render/CViewer.h"

#include <QThread>

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace {

// Records the times it is called with.
struct TimeLog : vpe::CFrameCallback {
    std::vector<float> times;
    void operator()(vpe::CSceneNode*, const vpe::CFrameTime& time) override { times.push_back(time.time); }
};

void tick(vpe::CClock* clock, double seconds, int times = 1)
{
    for (int i = 0; i < times; ++i)
        clock->Tick(seconds);
}

TEST(ClockTimer, advancesByElapsedTimesScaleUnlessPaused)
{
    vpe::CRefPtr<vpe::CClock> clock = new vpe::CClock;
    vpe::CRefPtr<vpe::CClockTimer> normal = new vpe::CClockTimer(clock, "normal");
    vpe::CRefPtr<vpe::CClockTimer> fast = new vpe::CClockTimer(clock, "fast");
    vpe::CRefPtr<vpe::CClockTimer> held = new vpe::CClockTimer(clock, "held");
    fast->SetScale(2.0f);
    held->Pause(true);
    tick(clock, 0.25, 4);
    EXPECT_DOUBLE_EQ(normal->GetValue(), 1.0);
    EXPECT_DOUBLE_EQ(fast->GetValue(), 2.0);
    EXPECT_DOUBLE_EQ(held->GetValue(), 0.0);

    held->Pause(false);
    normal->Reset();
    tick(clock, 0.5);
    EXPECT_DOUBLE_EQ(held->GetValue(), 0.5);
    EXPECT_DOUBLE_EQ(normal->GetValue(), 0.5);
}

TEST(ClockTimer, aDestroyedTimerLeavesItsClock)
{
    vpe::CRefPtr<vpe::CClock> clock = new vpe::CClock;
    {
        vpe::CRefPtr<vpe::CClockTimer> shortLived = new vpe::CClockTimer(clock, "short");
    }
    tick(clock, 1.0);
    EXPECT_EQ(clock->GetFrameNumber(), 1u);
}

TEST(ClockTimerManager, findsTheFirstOfANameAndForgetsTheDefaultOfAGoneViewer)
{
    vpe::CClockTimerManager* timers = vpe::CClockTimerManager::GetInstance();
    vpe::CRefPtr<vpe::CClock> clock = new vpe::CClock;
    vpe::CRefPtr<vpe::CClockTimer> first = new vpe::CClockTimer(clock, "shared");
    vpe::CRefPtr<vpe::CClockTimer> second = new vpe::CClockTimer(clock, "shared");
    timers->Add(first.get());
    timers->Add(second.get());
    EXPECT_EQ(timers->Find("shared"), first.get());
    timers->Remove(first.get());
    EXPECT_EQ(timers->Find("shared"), second.get());
    timers->Remove("shared");
    EXPECT_EQ(timers->Find("shared"), nullptr);

    {
        vpe::CRefPtr<vpe::CViewer> viewer = new vpe::CViewer;
        EXPECT_EQ(timers->Find(vpe::CClockTimerManager::kDefaultTimerName), viewer->GetDefaultTimer());
    }
    EXPECT_EQ(timers->Find(vpe::CClockTimerManager::kDefaultTimerName), nullptr);
}

TEST(TimeSources, recordingAdvancesExactlyOneFramePerFrame)
{
    vpe::CRefPtr<vpe::CViewer> viewer = new vpe::CViewer;
    vpe::CRefPtr<vpe::CVideoRecorderTimeSource> video = new vpe::CVideoRecorderTimeSource(24);
    viewer->SetTimeSource(video.get());
    for (int i = 0; i < 48; ++i) {
        viewer->AdvanceFrame();
        if (i == 10)
            QThread::msleep(30);
    }
    EXPECT_NEAR(viewer->GetDefaultTimer()->GetValue(), 2.0, 1e-12);
    EXPECT_EQ(video->GetFrameCount(), 48u);
    video->Reset();
    EXPECT_EQ(video->GetFrameCount(), 0u);

    viewer->SetTimeSource(nullptr);
    viewer->AdvanceFrame();
    QThread::msleep(20);
    const double before = viewer->GetDefaultTimer()->GetValue();
    viewer->AdvanceFrame();
    EXPECT_GE(viewer->GetDefaultTimer()->GetValue() - before, 0.015);
}

class Animation : public ::testing::Test {
protected:
    vpe::CAnimator* animate(const std::string& name, double length, vpe::CClockTimer* timer = nullptr)
    {
        vpe::CAnimation* animation = manager()->CreateAnimation(name, length);
        animation->SetFrameCallback(nullptr, log.get());
        vpe::CAnimator* animator = manager()->CreateAnimator(name, animation, timer);
        animator->Enable();
        return animator;
    }
    vpe::CAnimationManager* manager() { return viewer->GetAnimationManager(); }

    vpe::CRefPtr<vpe::CViewer> viewer = new vpe::CViewer;
    vpe::CRefPtr<TimeLog> log = new TimeLog;
};

TEST_F(Animation, callbacksSeeTheTimerAlreadyAdvancedThisFrame)
{
    viewer->SetTimeSource(new vpe::CVideoRecorderTimeSource(10));
    animate("a", 5.0);
    viewer->AdvanceFrame();
    viewer->AdvanceFrame();
    EXPECT_EQ(log->times, (std::vector<float>{0.1f, 0.2f}));
}

TEST_F(Animation, animatorSeesItsOwnTimer)
{
    vpe::CRefPtr<vpe::CClockTimer> slow = new vpe::CClockTimer(viewer->GetClock(), "slow");
    slow->SetScale(0.5f);
    vpe::CAnimator* onSlow = animate("slow", 100.0, slow.get());
    vpe::CAnimator* onDefault = animate("default", 100.0);
    viewer->GetClock()->Tick(4.0);
    EXPECT_DOUBLE_EQ(onSlow->GetTime(), 2.0);
    EXPECT_DOUBLE_EQ(onDefault->GetTime(), 4.0);
}

TEST_F(Animation, loopingWrapsAndOthersRunOn)
{
    vpe::CAnimator* looping = animate("loop", 2.0);
    looping->SetLoop(true);
    vpe::CAnimator* once = animate("once", 2.0);
    viewer->GetClock()->Tick(5.5);
    EXPECT_DOUBLE_EQ(looping->GetTime(), 1.5);
    EXPECT_DOUBLE_EQ(once->GetTime(), 5.5);
}

TEST_F(Animation, disabledOrPausedAnimatorsCallNothing)
{
    vpe::CAnimator* animator = animate("a", 10.0);
    animator->Disable();
    viewer->GetClock()->Tick(1.0);
    manager()->EvaluateAnimators(1);
    EXPECT_TRUE(log->times.empty());

    animator->Enable();
    animator->Pause();
    viewer->GetClock()->Tick(1.0);
    manager()->EvaluateAnimators(2);
    EXPECT_TRUE(log->times.empty());
    EXPECT_DOUBLE_EQ(animator->GetTime(), 1.0);

    // Resumed, it carries on from where it stood.
    animator->Resume();
    viewer->GetClock()->Tick(0.5);
    manager()->EvaluateAnimators(3);
    EXPECT_EQ(log->times, std::vector<float>{1.5f});

    animator->Reset();
    viewer->GetClock()->Tick(0.25);
    EXPECT_DOUBLE_EQ(animator->GetTime(), 0.25);
}

TEST_F(Animation, namesAreUniqueAndDestroyForgets)
{
    vpe::CAnimation* animation = manager()->CreateAnimation("camera_animation", 8.0);
    ASSERT_NE(animation, nullptr);
    EXPECT_EQ(manager()->CreateAnimation("camera_animation", 1.0), nullptr);
    EXPECT_NE(manager()->CreateAnimator("camera_animation", animation), nullptr);
    EXPECT_EQ(manager()->CreateAnimator("camera_animation", animation), nullptr);
    EXPECT_EQ(manager()->FindAnimator("camera_animation")->GetTimer(), viewer->GetDefaultTimer());
    manager()->DestroyAnimator("camera_animation");
    manager()->DestroyAnimation("camera_animation");
    EXPECT_EQ(manager()->FindAnimator("camera_animation"), nullptr);
    EXPECT_EQ(manager()->FindAnimation("camera_animation"), nullptr);
}

TEST(NodeTrack, halfwayIsTheMidPositionAndTheSlerpedRotation)
{
    osg::ref_ptr<vpe::CGroupNode> node = new vpe::CGroupNode;
    vpe::CRefPtr<vpe::CAnimation> animation = new vpe::CAnimation("move", 4.0);
    vpe::CNodeTrack* track = animation->CreateNodeTrack(node.get());
    track->AddKeyFrame({2.0, {10, 20, 30}, osg::Quat(osg::PI_2, osg::Vec3d(0, 0, 1))});
    track->AddKeyFrame({0.0, {0, 0, 0}, osg::Quat()});

    struct Row {
        float time;
        osg::Vec3d position;
        double angle;
    };
    const Row rows[] = {{-1.0f, {0, 0, 0}, 0.0}, {1.0f, {5, 10, 15}, osg::PI_4}, {0.5f, {2.5, 5, 7.5}, osg::PI / 8},
                        {3.0f, {10, 20, 30}, osg::PI_2}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.time);
        vpe::CFrameTime time;
        time.time = row.time;
        animation->Evaluate(time);
        const osg::Matrixd& m = node->getMatrix();
        EXPECT_NEAR((m.getTrans() - row.position).length(), 0.0, 1e-9);
        const osg::Vec3d turned = osg::Vec3d(1, 0, 0) * osg::Matrixd(m.getRotate());
        EXPECT_NEAR(turned.x(), std::cos(row.angle), 1e-9);
        EXPECT_NEAR(turned.y(), std::sin(row.angle), 1e-9);
    }
}

vpe::CQuaternion orientation(const osg::Vec3d& d, const osg::Vec3d& u)
{
    const osg::Vec3d s = d ^ u;
    const double rows[3][3] = {{s.x(), s.y(), s.z()}, {d.x(), d.y(), d.z()}, {u.x(), u.y(), u.z()}};
    vpe::CQuaternion q;
    q.FromRotationMatrix(rows);
    return q;
}

// A callback is handed its animation's node, unless it holds its own.
TEST(FrameCallback, isHandedTheNodeOnlyWhenItWantsIt)
{
    struct NodeLog : vpe::CFrameCallback {
        bool wants = true;
        std::vector<vpe::CSceneNode*> nodes;
        void operator()(vpe::CSceneNode* node, const vpe::CFrameTime&) override { nodes.push_back(node); }
        bool WantsNode() const override { return wants; }
    };
    vpe::CRefPtr<vpe::CSceneNode> node = new vpe::CSceneNode;
    vpe::CRefPtr<NodeLog> log = new NodeLog;
    vpe::CRefPtr<vpe::CAnimation> animation = new vpe::CAnimation("handed", 1.0);
    animation->SetFrameCallback(node.get(), log.get());
    animation->Evaluate({});
    log->wants = false;
    animation->Evaluate({});
    EXPECT_EQ(log->nodes, (std::vector<vpe::CSceneNode*>{node.get(), nullptr}));
}

TEST(CameraTrack, cameraTakesTheKeysPoseAndTurnsBetweenThem)
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    vpe::CRefPtr<vpe::CAnimation> animation = new vpe::CAnimation("camera_animation", 8.0);
    vpe::CCameraTrack* track = animation->CreateCameraTrack();
    track->SetAnimable(new vpe::CCameraAnimable(camera.get()));
    track->AddKeyFrame({0.0, {0, -100, 10}, orientation({0, 1, 0}, {0, 0, 1})});
    track->AddKeyFrame({8.0, {100, 0, 10}, orientation({-1, 0, 0}, {0, 0, 1})});

    vpe::CFrameTime time;
    time.time = 8.0f;
    animation->Evaluate(time);
    EXPECT_NEAR((osg::Vec3d(camera->GetPosition()) - osg::Vec3d(100, 0, 10)).length(), 0.0, 1e-4);
    EXPECT_NEAR((osg::Vec3d(camera->GetDirection()) - osg::Vec3d(-1, 0, 0)).length(), 0.0, 1e-6);
    EXPECT_NEAR((osg::Vec3d(camera->GetUpDirection()) - osg::Vec3d(0, 0, 1)).length(), 0.0, 1e-6);

    time.time = 4.0f;
    animation->Evaluate(time);
    const double h = std::sqrt(0.5);
    EXPECT_NEAR((osg::Vec3d(camera->GetDirection()) - osg::Vec3d(-h, h, 0)).length(), 0.0, 1e-6);
    EXPECT_NEAR((osg::Vec3d(camera->GetPosition()) - osg::Vec3d(50, -50, 10)).length(), 0.0, 1e-4);
}

} // namespace

namespace {

TEST(ClockTimerRegistry, outlivesTheViewersOfDocumentsLeftOpenAtExit)
{
    // A document left open with its view is closed while the program's
    // statics are torn down; its viewer then unregisters its clock timer,
    // from a registry that was already destroyed (AddressSanitizer saw it on
    // every such exit). The child is a fresh process that makes the
    // document manager before the registry, as the programs do.
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            PfDocManager* documents = PfDocManagerPtr();
            PfGsModelView::Attach(documents->NewDocument());
            std::exit(vpe::CClockTimerManager::GetInstance()->Find(vpe::CClockTimerManager::kDefaultTimerName)
                          ? 0
                          : 3);
        },
        ::testing::ExitedWithCode(0), "");
}

} // namespace
