#include "EffectScene.h"

#include "animation/KVXTowerAnimation.h"
#include "effects/KVXTowerRotateCallback.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/vpe/scene/CStateSet.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <osg/ComputeBoundsVisitor>
#include <osg/Geode>

namespace {

const QDate kStart(2024, 6, 1);
const QDate kEnd(2024, 6, 21);

// A 60 m crane with ties at 20 m and 40 m, slewing from 0 to 90 degrees,
// standing 30 m high from 1 June and 50 m from 8 June, dismantled on 25 June.
class TowerCallback : public EffectScene {
protected:
    void SetUp() override
    {
        EffectScene::SetUp();
        crane = new KVXTowerCraneObject();
        crane->SetTowerHeight(60000);
        crane->SetJibLength(40000.0);
        document->GetDatabase()->GetModelSpace()->Add(crane);
        record = KVXTowerAnimation::Cast(addRecord(crane, KVXAnimation::Rotation, KVXAnimation::LeftToRight, kStart, kEnd));
        record->setStartAngle(0.0);
        record->setEndAngle(90.0);
        record->SetLiftingData({{kStart, 30000}, {QDate(2024, 6, 8), 50000}});
        record->SetIsDismantle(true);
        record->SetDismantleDate(QDate(2024, 6, 25));
    }
    KVXTowerRotateCallback* start()
    {
        callback = new KVXTowerRotateCallback(record, context().get());
        play(record, callback.get());
        return callback.get();
    }
    bool shown() const { return callback->GetCraneRoot()->getNodeMask() != 0u; }
    osg::Group* ties() const { return callback->GetTiesNode()->getChild(0)->asGroup(); }

    KVXTowerCraneObject* crane = nullptr;
    KVXTowerAnimation* record = nullptr;
    vpe::CRefPtr<KVXTowerRotateCallback> callback;
    vpe::CRefPtr<vpe::CCamera> front = cameraAt({0, -150000, 30000}, {0, 0, 30000});
};

TEST_F(TowerCallback, slewsBackAndForthAtATenthOfPiPerSecond)
{
    start();
    // 90 degrees at 18 degrees a second: five seconds a sweep.
    const std::pair<double, double> angles[] = {{0.0, 0.0},  {2.5, 45.0}, {5.0, 90.0}, {7.5, 45.0},
                                                {10.0, 0.0}, {12.0, 36.0}, {18.0, 36.0}};
    for (const auto& [elapsed, degrees] : angles)
        EXPECT_NEAR(callback->SlewAngle(elapsed), degrees, 1e-3) << elapsed;
    record->setStartAngle(120.0);
    record->setEndAngle(30.0);
    EXPECT_NEAR(callback->SlewAngle(2.5), 75.0, 1e-3) << "turning the other way";
    record->setEndAngle(120.0);
    EXPECT_EQ(callback->SlewAngle(7.0), 120.0) << "equal angles never turn";
}

TEST_F(TowerCallback, climbsToTheLatestLiftingStepReached)
{
    start();
    int height = 0;
    ASSERT_TRUE(callback->LiftingHeight(3.0f, height));
    EXPECT_EQ(height, 30000);
    ASSERT_TRUE(callback->LiftingHeight(7.5f, height));
    EXPECT_EQ(height, 50000);
    // Only a later step: it is the earliest one, so it stands from the start.
    record->SetLiftingData({{QDate(2024, 6, 15), 45000}});
    ASSERT_TRUE(callback->LiftingHeight(1.0f, height));
    EXPECT_EQ(height, 45000);
    record->SetLiftingData({});
    EXPECT_FALSE(callback->LiftingHeight(1.0f, height));
}

TEST_F(TowerCallback, poseAtADateRaisesTurnsAndCutsTheMast)
{
    start();
    evaluateAt(12.0);
    EXPECT_TRUE(shown());
    const osg::Matrixd upper = callback->GetUpperNode()->getMatrix();
    EXPECT_NEAR((osg::Vec3d(0, 0, 0) * upper).z(), -10000.0, 1e-6) << "50 m of a 60 m crane";
    const osg::Vec3d tip = osg::Vec3d(1000, 0, 0) * callback->GetJibNode()->getMatrix();
    EXPECT_NEAR(tip.x(), 1000 * std::cos(osg::DegreesToRadians(36.0)), 1e-2);
    EXPECT_NEAR(tip.y(), 1000 * std::sin(osg::DegreesToRadians(36.0)), 1e-2);
    EXPECT_NEAR(tip.z(), -10000.0, 1e-3);

    osg::Geode* mast = callback->GetMastNode()->getChild(0)->asGeode();
    ASSERT_NE(mast, nullptr);
    auto* state = dynamic_cast<vpe::CStateSet*>(mast->getDrawable(0)->getStateSet());
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(state->GetClipPlane(0), osg::Vec4d(0, 0, -1, 50000));
}

TEST_F(TowerCallback, wallTiesShowOnceTheClimbingPassedThem)
{
    start();
    evaluateAt(3.0);
    ASSERT_EQ(ties()->getNumChildren(), 2u);
    EXPECT_NE(ties()->getChild(0)->getNodeMask(), 0u) << "the 20 m tie is below the 30 m climb";
    EXPECT_EQ(ties()->getChild(1)->getNodeMask(), 0u) << "the 40 m tie is not reached";
    evaluateAt(10.0);
    EXPECT_NE(ties()->getChild(1)->getNodeMask(), 0u);
}

TEST_F(TowerCallback, hiddenBeforeErectionAndAfterDismantling)
{
    start();
    EXPECT_FALSE(shown()) << "a crane with lifting steps waits for its start";
    evaluateAt(-2.0);
    EXPECT_FALSE(shown());
    evaluateAt(3.0);
    EXPECT_TRUE(shown());
    QImage picture = render(*front);
    keep(picture, "tower_crane_30m");
    EXPECT_TRUE(anyModelNear(picture, project(*front, {0, 0, 15000}))) << "the mast below the climb";
    EXPECT_FALSE(anyModelNear(picture, project(*front, {0, 0, 48000}))) << "no mast above it";

    evaluateAt(22.0);
    EXPECT_TRUE(shown()) << "after the end the last pose stays";
    evaluateAt(24.5);
    EXPECT_FALSE(shown());
    picture = render(*front);
    EXPECT_FALSE(anyModelNear(picture, project(*front, {0, 0, 15000}), 6));
}

TEST_F(TowerCallback, withoutLiftingStepsTheCraneStandsBeforeItsStart)
{
    record->SetLiftingData({});
    start();
    evaluateAt(-2.0);
    EXPECT_TRUE(shown());
    EXPECT_TRUE(callback->GetUpperNode()->getMatrix().isIdentity());
}

TEST_F(TowerCallback, oneCallbackPerCraneAndEverythingPutBack)
{
    osg::Group* group = crane->GetSceneNode(view)->asGroup();
    ASSERT_EQ(group->getNumChildren(), 4u);
    const vpe::CRefPtr<osg::Node> jib = group->getChild(0);
    start();
    EXPECT_EQ(group->getNumChildren(), 0u);
    EXPECT_EQ(crane->GetBeingAnimated(), 1);
    vpe::CRefPtr<KVXTowerRotateCallback> second = new KVXTowerRotateCallback(record, context().get());
    EXPECT_TRUE(second->IsInactive());
    second = nullptr;
    EXPECT_EQ(crane->GetBeingAnimated(), 1) << "the inactive one leaves the byte alone";

    evaluateAt(3.0);
    viewer->GetAnimationManager()->DestroyAnimator("1");
    viewer->GetAnimationManager()->DestroyAnimation("1");
    const vpe::CRefPtr<vpe::CGroupNode> root = callback->GetCraneRoot();
    callback = nullptr;
    EXPECT_EQ(crane->GetBeingAnimated(), 0);
    ASSERT_EQ(group->getNumChildren(), 4u);
    EXPECT_EQ(group->getChild(0), jib.get());
    EXPECT_EQ(root->getNumParents(), 0u);
    osg::Group* wallTies = group->getChild(3)->asGroup();
    for (unsigned int i = 0; i < wallTies->getNumChildren(); ++i)
        EXPECT_NE(wallTies->getChild(i)->getNodeMask(), 0u);
}

} // namespace
