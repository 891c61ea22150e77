#include "animation/KVXAnimationNames.h"
#include "animation/KVXAnimatorManager.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CStateSet.h"
#include "keyframe/KVXDateAnimationClockTimer.h"

#include "tests/support/FixedStepTimeSource.h"
#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QSignalSpy>

#include <osg/ComputeBoundsVisitor>
#include <osg/Geode>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

const QDate kMarch1(2024, 3, 1);

// Three storeys, a gate that swings, a truck with a route; every kind of
// record on them.
class SchedulePlayback : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        view = PfGsModelView::Attach(document);
        viewer = view->GetViewer();
        // Only the test's own ticks move the clocks.
        viewer->SetTimeSource(new FixedStepTimeSource);
        viewer->GetScene()->SetShadowsEnabled(false);
    }
    void TearDown() override
    {
        manager->stop();
        PfDocManagerPtr()->CloseAll();
    }
    KVX3DElementObject* addBox(const osg::Vec3d& min, const osg::Vec3d& max)
    {
        auto* element = new KVX3DElementObject();
        element->AddBody(vpe::CBody::CreateBox(min, max));
        document->GetDatabase()->GetModelSpace()->Add(element);
        return element;
    }
    KVXAnimation* add(const PfDbObject* element, KVXAnimation::AnimType type, int firstDay, int lastDay)
    {
        KVXAnimation* record = manager->addKvxAnimation(static_cast<qint64>(element->GetHandle()), type,
                                                        KVXAnimation::BottomUp);
        record->setStartDate(kMarch1.addDays(firstDay));
        record->setEndDate(kMarch1.addDays(lastDay));
        return record;
    }
    // Every clip plane of the renderables below the root, and the root's
    // children: what a restored scene must give back.
    std::vector<std::string> sceneState() const
    {
        std::vector<std::string> state;
        osg::Group* root = viewer->GetScene()->GetRootNode();
        for (unsigned int i = 0; i < root->getNumChildren(); ++i) {
            osg::Node* child = root->getChild(i);
            state.push_back(child->getName() + "@" + std::to_string(reinterpret_cast<std::uintptr_t>(child)));
            if (osg::Geode* geode = child->asGeode()) {
                for (unsigned int d = 0; d < geode->getNumDrawables(); ++d) {
                    auto* stateSet = dynamic_cast<vpe::CStateSet*>(geode->getDrawable(d)->getStateSet());
                    for (int plane = 0; stateSet && plane < vpe::CStateSet::kMaxClipPlanes; ++plane) {
                        if (stateSet->HasClipPlane(plane))
                            state.push_back("plane " + std::to_string(plane));
                    }
                }
            }
        }
        std::sort(state.begin(), state.end());
        return state;
    }
    // Where the element's box centre stands in the world now.
    static osg::Vec3d worldCentre(KVXAnimation* record)
    {
        vpe::CSceneNode* node = record->getNode();
        const osg::Matrixd toWorld = osg::computeLocalToWorld(node->getParentalNodePaths()[0]);
        return osg::Vec3d(node->getBound().center()) * toWorld;
    }
    void frames(int count)
    {
        for (int i = 0; i < count; ++i)
            viewer->AdvanceFrame();
    }

    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    PfDbDocument* document = nullptr;
    PfGsModelView* view = nullptr;
    vpe::CViewer* viewer = nullptr;
};

TEST_F(SchedulePlayback, anEmptyScheduleDoesNotStart)
{
    manager->play();
    EXPECT_EQ(manager->getPlayState(), 0);
}

TEST_F(SchedulePlayback, playPauseResumeStop)
{
    add(addBox({0, 0, 0}, {1000, 1000, 3000}), KVXAnimation::Construction, 0, 10);
    manager->play();
    EXPECT_EQ(manager->getPlayState(), 1);
    EXPECT_NE(viewer->GetAnimationManager()->FindAnimator("1"), nullptr);
    EXPECT_NE(viewer->GetAnimationManager()->FindAnimator(KVXAnimationNames::kAnimControllerName), nullptr);
    manager->pause();
    EXPECT_EQ(manager->getPlayState(), 2);
    manager->pause();
    EXPECT_EQ(manager->getPlayState(), 1) << "pausing twice plays on";
    manager->stop();
    EXPECT_EQ(manager->getPlayState(), 0);
    EXPECT_EQ(viewer->GetAnimationManager()->GetNumAnimators(), 0u);
    manager->pause();
    EXPECT_EQ(manager->getPlayState(), 0) << "no pause while stopped";
}

TEST_F(SchedulePlayback, theDateClockDrivesEveryRecord)
{
    KVX3DElementObject* storey = addBox({0, 0, 0}, {1000, 1000, 3000});
    KVXAnimation* record = add(storey, KVXAnimation::Construction, 0, 10);
    manager->play();
    KVXDateAnimationClockTimer* clock =
        KVXDateAnimationClockTimer::GetOrCreate(KVXAnimationNames::kDateAnimationClockTimer);
    viewer->GetClock()->Tick(5.0);
    EXPECT_DOUBLE_EQ(clock->GetValue(), 5.0);
    viewer->AdvanceFrame();
    auto* state = dynamic_cast<vpe::CStateSet*>(record->getNode()->asGeode()->getDrawable(0)->getStateSet());
    ASSERT_NE(state, nullptr);
    ASSERT_TRUE(state->HasClipPlane(0));
    EXPECT_NEAR(state->GetClipPlane(0).w(), 1500.0, 60.0) << "about half built";
}

TEST_F(SchedulePlayback, unbuiltElementsAreHiddenWhenPlayStarts)
{
    KVX3DElementObject* first = addBox({0, 0, 0}, {1000, 1000, 3000});
    KVX3DElementObject* second = addBox({2000, 0, 0}, {3000, 1000, 3000});
    add(first, KVXAnimation::Construction, 5, 10);
    add(first, KVXAnimation::Demolition, 20, 30);
    add(second, KVXAnimation::Demolition, 2, 4);
    manager->play();
    auto planeOf = [](const KVX3DElementObject* element, const PfGsModelView* view) {
        auto* geode = element->GetSceneNode(view)->asGeode();
        return dynamic_cast<vpe::CStateSet*>(geode->getDrawable(0)->getStateSet());
    };
    EXPECT_EQ(planeOf(first, view)->GetClipPlane(0), osg::Vec4d(0, 0, -1, -1000000.0));
    EXPECT_FALSE(planeOf(second, view) && planeOf(second, view)->HasClipPlane(0)) << "first demolished: whole";
}

TEST_F(SchedulePlayback, previewHidesTheLabelsAndLeavesTheSceneAsItWas)
{
    KVX3DElementObject* storey = addBox({0, 0, 0}, {1000, 1000, 3000});
    KVX3DElementObject* gate = addBox({3000, 0, 0}, {4000, 200, 2000});
    KVX3DElementObject* truck = addBox({6000, 0, 0}, {7000, 2000, 1500});
    add(storey, KVXAnimation::Construction, 0, 10)->setIsLayering(true);
    add(addBox({0, 3000, 0}, {1000, 4000, 3000}), KVXAnimation::Demolition, 2, 8);
    KVXAnimation* swing = add(gate, KVXAnimation::Rotation, 0, 4);
    swing->setEndAngle(90.0);
    KVXAnimation* drive = add(truck, KVXAnimation::Path, 0, 10);
    drive->SetPoints({{6500, 1000, 0}, {16500, 1000, 0}});
    add(storey, KVXAnimation::Emphasis, 0, 10);
    const std::vector<std::string> before = sceneState();

    QSignalSpy previewing(manager, &KVXAnimatorManager::isPreviewingSignal);
    manager->preview();
    EXPECT_TRUE(manager->isPreviewing());
    EXPECT_EQ(manager->signGroupNode()->getNodeMask(), 0u);
    viewer->GetClock()->Tick(2.0);
    frames(3);
    EXPECT_NE(sceneState(), before) << "the schedule changed the scene";
    // Halfway along its 10 m route at day 5.
    viewer->GetClock()->Tick(3.0);
    frames(1);
    ASSERT_NE(drive->getRouteNode(), nullptr);
    EXPECT_NEAR(worldCentre(drive).x(), 6500.0 + 5000.0, 1.0);

    manager->stopSlot();
    EXPECT_FALSE(manager->isPreviewing());
    ASSERT_EQ(previewing.count(), 2);
    EXPECT_TRUE(previewing.at(0).at(0).toBool());
    EXPECT_FALSE(previewing.at(1).at(0).toBool());
    EXPECT_NE(manager->signGroupNode()->getNodeMask(), 0u);
    EXPECT_EQ(sceneState(), before);
    EXPECT_EQ(manager->getPlayState(), 0);
}

TEST_F(SchedulePlayback, aTurningElementStaysOnItsCentreFarFromTheOrigin)
{
    // A gate 82 m from the origin turning a quarter over four days: between
    // key frames it used to wander off by up to 24 m.
    KVXAnimation* swing = add(addBox({72200, -36300, 0}, {74200, -36100, 2000}), KVXAnimation::Rotation, 0, 4);
    swing->setEndAngle(90.0);
    manager->play();
    const osg::Vec3d centre(73200, -36200, 1000);
    for (int quarter = 0; quarter <= 4; ++quarter) {
        SCOPED_TRACE(quarter);
        if (quarter > 0)
            viewer->GetClock()->Tick(1.0);
        frames(1);
        EXPECT_NEAR((worldCentre(swing) - centre).length(), 0.0, 1.0);
    }
    manager->stop();
}

TEST_F(SchedulePlayback, aPreviewEndsByItselfPastTheSchedule)
{
    add(addBox({0, 0, 0}, {1000, 1000, 3000}), KVXAnimation::Construction, 0, 4);
    manager->preview();
    viewer->GetClock()->Tick(3.0);
    EXPECT_TRUE(manager->isPreviewing());
    viewer->GetClock()->Tick(1.5);
    EXPECT_FALSE(manager->isPreviewing());
    EXPECT_EQ(manager->getPlayState(), 0);
}

TEST_F(SchedulePlayback, jumpingToADatePausesThereAndPlayGoesOn)
{
    add(addBox({0, 0, 0}, {1000, 1000, 3000}), KVXAnimation::Construction, 0, 10);
    manager->playAnimationAtDate(kMarch1.addDays(4));
    EXPECT_EQ(manager->getPlayState(), 2);
    KVXDateAnimationClockTimer* clock =
        KVXDateAnimationClockTimer::GetOrCreate(KVXAnimationNames::kDateAnimationClockTimer);
    frames(3);
    EXPECT_DOUBLE_EQ(clock->GetValue(), 4.0);
    manager->play();
    EXPECT_EQ(manager->getPlayState(), 1);
    viewer->GetClock()->Tick(1.0);
    EXPECT_DOUBLE_EQ(clock->GetValue(), 5.0);
}

TEST_F(SchedulePlayback, stopLeavesEachElementAsItsRecordEnds)
{
    KVX3DElementObject* built = addBox({0, 0, 0}, {1000, 1000, 3000});
    KVX3DElementObject* demolished = addBox({2000, 0, 0}, {3000, 1000, 3000});
    add(built, KVXAnimation::Construction, 0, 10);
    add(demolished, KVXAnimation::Demolition, 0, 10);
    manager->play();
    viewer->GetClock()->Tick(3.0);
    frames(1);
    manager->stop();
    auto* builtState = dynamic_cast<vpe::CStateSet*>(built->GetSceneNode(view)->asGeode()->getDrawable(0)->getStateSet());
    EXPECT_FALSE(builtState->HasClipPlane(0));
    auto* goneState =
        dynamic_cast<vpe::CStateSet*>(demolished->GetSceneNode(view)->asGeode()->getDrawable(0)->getStateSet());
    EXPECT_EQ(goneState->GetClipPlane(1), osg::Vec4d(0, 0, 1, -3002.0)) << "cut away whole";
}

// ---- legality and conflicts ----

struct RangeCase {
    const char* name;
    int firstDay;
    int lastDay;
    bool legal;
};

class LegalTime : public SchedulePlayback, public ::testing::WithParamInterface<RangeCase> {};

TEST_P(LegalTime, testsOnlyTheEndsInclusively)
{
    KVX3DElementObject* storey = addBox({0, 0, 0}, {1000, 1000, 3000});
    add(storey, KVXAnimation::Construction, 10, 20);
    KVXAnimation* looped = add(storey, KVXAnimation::Emphasis, 40, 45);
    looped->setLoopPlayback(true);
    looped->setLoopEndDate(kMarch1.addDays(60));
    KVXAnimation* candidate = add(storey, KVXAnimation::Rotation, 100, 101);
    const RangeCase& c = GetParam();
    EXPECT_EQ(manager->isLegalTime(candidate, kMarch1.addDays(c.firstDay), kMarch1.addDays(c.lastDay)), c.legal);
}

INSTANTIATE_TEST_SUITE_P(Ranges, LegalTime,
                         ::testing::Values(RangeCase{"before", 0, 9, true}, RangeCase{"endOnFirstDay", 0, 10, false},
                                           RangeCase{"startOnLastDay", 20, 25, false},
                                           RangeCase{"inside", 12, 15, false}, RangeCase{"enclosesOther", 5, 25, true},
                                           RangeCase{"inTheLoop", 50, 55, false}, RangeCase{"afterTheLoop", 61, 70, true}),
                         [](const ::testing::TestParamInfo<RangeCase>& info) { return std::string(info.param.name); });

TEST_F(SchedulePlayback, conflictsAreFoundByKind)
{
    KVX3DElementObject* storey = addBox({0, 0, 0}, {1000, 1000, 3000});
    KVX3DElementObject* other = addBox({2000, 0, 0}, {3000, 1000, 3000});
    KVXAnimation* a = add(storey, KVXAnimation::Construction, 0, 9);   // 1: overlaps 2
    KVXAnimation* b = add(storey, KVXAnimation::Emphasis, 4, 19);      // 2: overlaps 1
    add(other, KVXAnimation::Construction, 5, 5);                      // 3: empty range
    KVXAnimation* outer = add(other, KVXAnimation::Emphasis, 10, 40);  // 4: encloses 5
    add(other, KVXAnimation::Rotation, 20, 30);                        // 5: inside 4
    KVXAnimation* orphan = add(storey, KVXAnimation::Rotation, 50, 60);
    orphan->setObjId(999999);                                           // 6: no element
    manager->checkAnimations();
    const auto errors = manager->getErrorMap();
    auto expect = [&](int number, int other, int kind) {
        ASSERT_EQ(errors.count(number), 1u) << number;
        EXPECT_EQ(errors.at(number).conflictNumber, other) << number;
        EXPECT_EQ(errors.at(number).kind, kind) << number;
    };
    expect(1, 2, KVXAnimatorManager::Overlapping);
    expect(2, 1, KVXAnimatorManager::Overlapping);
    expect(3, 0, KVXAnimatorManager::InvalidDateRange);
    expect(5, 4, KVXAnimatorManager::Overlapping);
    expect(6, 0, KVXAnimatorManager::ElementNotFound);
    EXPECT_EQ(errors.count(4), 0u) << "enclosing is not reported";
    EXPECT_EQ(manager->findConflictAnimation(a).size(), 1u);
    EXPECT_TRUE(manager->findConflictAnimation(outer).empty());
    (void)b;

    document->SetActiveView(nullptr);
    orphan->setObjId(static_cast<qint64>(storey->GetHandle()));
    manager->checkAnimations();
    EXPECT_EQ(manager->getErrorMap().size(), errors.size()) << "without a view the last map stays";
}

} // namespace
