#include "EffectScene.h"

#include "effects/KVXAntiColorCallback.h"
#include "effects/KVXCloneStateSetVisitor.h"
#include "host/vpe/scene/CEffect.h"
#include "host/vpe/scene/CStateSet.h"

#include "tests/support/ModuleEnvironment.h"

#include <osg/Geometry>
#include "tests/support/QtPrinters.h"

namespace {

const QDate kStart(2024, 5, 1);
const QDate kEnd(2024, 5, 21);

// A shed with a grey wall standing in front of it, seen from the front.
class EmphasisCallback : public EffectScene {
protected:
    void SetUp() override
    {
        EffectScene::SetUp();
        shed = addBox({0, 0, 0}, {4000, 4000, 3000}, QColor(90, 160, 90));
        wall = addBox({-3000, -3000, 0}, {7000, -2800, 4000}, QColor(150, 150, 150));
        record = addRecord(shed, KVXAnimation::Emphasis, KVXAnimation::LeftToRight, kStart, kEnd);
        callback = new KVXAntiColorCallback(record->getNode(), record, context().get());
        play(record, callback.get());
    }
    QColor shedColourSeen()
    {
        const QImage picture = render(*front);
        return picture.pixelColor(project(*front, {2000, 0, 1500}));
    }

    KVX3DElementObject* shed = nullptr;
    KVX3DElementObject* wall = nullptr;
    KVXAnimation* record = nullptr;
    vpe::CRefPtr<KVXAntiColorCallback> callback;
    vpe::CRefPtr<vpe::CCamera> front = cameraAt({2000, -25000, 1500}, {2000, 0, 1500});
};

TEST_F(EmphasisCallback, redForTwentyFramesThenPlainForTwentyThroughTheWall)
{
    const QColor hidden = shedColourSeen();
    ASSERT_FALSE(isReddish(hidden)) << "the wall hides the shed";
    for (int frame = 0; frame < 2 * KVXAntiColorCallback::kPeriodFrames; ++frame) {
        evaluateAt(5.0);
        const bool red = frame % 40 < 20;
        ASSERT_EQ(record->getAntiNode() != nullptr, red) << "frame " << frame;
        if (frame % 10 == 0 || frame % 20 == 19) {
            const QColor seen = shedColourSeen();
            EXPECT_EQ(isReddish(seen), red) << "frame " << frame;
            if (frame == 0)
                keep(render(*front), "emphasis_red");
        }
    }
    EXPECT_EQ(callback->GetFrameCounter(), 80);
}

TEST_F(EmphasisCallback, outsideItsDaysNothingCountsOrChanges)
{
    evaluateAt(manager()->getAnimationTimeAtDate(kEnd) + 1.0);
    EXPECT_EQ(callback->GetFrameCounter(), 0);
    EXPECT_EQ(record->getAntiNode(), nullptr);

    // Both ends of the interval count as inside.
    evaluateAt(manager()->getAnimationTimeAtDate(kStart));
    EXPECT_EQ(callback->GetFrameCounter(), 1);
    EXPECT_NE(record->getAntiNode(), nullptr);
    evaluateAt(manager()->getAnimationTimeAtDate(kEnd));
    EXPECT_EQ(callback->GetFrameCounter(), 2);

    // Leaving the interval while red keeps the overlay for playback to take.
    evaluateAt(manager()->getAnimationTimeAtDate(kEnd) + 3.0);
    EXPECT_NE(record->getAntiNode(), nullptr);
}

TEST_F(EmphasisCallback, theElementsOwnLookIsUntouched)
{
    osg::StateSet* before = shed->GetSceneNode(view)->asGeode()->getDrawable(0)->getStateSet();
    evaluateAt(1.0);
    EXPECT_EQ(shed->GetSceneNode(view)->asGeode()->getDrawable(0)->getStateSet(), before);
    auto* overlayState = dynamic_cast<vpe::CStateSet*>(record->getAntiNode()->getStateSet());
    ASSERT_NE(overlayState, nullptr);
    EXPECT_EQ(overlayState->GetDrawingPriority(), vpe::CStateSet::kTopDrawingPriority);
}

TEST_F(EmphasisCallback, aNodeThatIsNeitherVisualNorGroupShowsNothing)
{
    vpe::CRefPtr<osg::Group> plain = new osg::Group;
    vpe::CRefPtr<KVXAntiColorCallback> odd = new KVXAntiColorCallback(plain.get(), record, context().get());
    (*odd)(plain.get(), vpe::CFrameTime{1.0f, 1});
    EXPECT_EQ(odd->GetOverlay(), nullptr);
    EXPECT_EQ(odd->GetFrameCounter(), 1);
}

TEST(CloneStateSetVisitor, givesPrivateStateSetsAndFeedsTheEffect)
{
    vpe::CRefPtr<vpe::CStateSet> shared = new vpe::CStateSet;
    vpe::CRefPtr<vpe::CVisualNode> node = new vpe::CVisualNode;
    vpe::CRefPtr<osg::Geometry> first = new osg::Geometry;
    vpe::CRefPtr<osg::Geometry> second = new osg::Geometry;
    first->setStateSet(shared.get());
    second->setStateSet(shared.get());
    node->addDrawable(first.get());
    node->addDrawable(second.get());
    vpe::CRefPtr<vpe::CEffect> effect = new vpe::CEffect;
    effect->AddTechnique(new vpe::CTechnique);
    vpe::CEffect::SetEffect(second.get(), effect.get());

    KVXCloneStateSetVisitor clone;
    node->accept(clone);
    EXPECT_NE(first->getStateSet(), shared.get());
    EXPECT_NE(second->getStateSet(), shared.get());
    EXPECT_NE(first->getStateSet(), second->getStateSet());
    ASSERT_EQ(effect->GetTechnique(0)->GetNumStateSets(), 1u);
    EXPECT_EQ(effect->GetTechnique(0)->GetStateSet(0), second->getStateSet());
}

} // namespace
