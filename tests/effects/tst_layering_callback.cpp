#include "EffectScene.h"

#include "effects/KVXAnimLayeringTransCallback.h"
#include "host/vpe/scene/CStateSet.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

namespace {

const QDate kStart(2024, 3, 1);
const QDate kEnd(2024, 3, 13);

// A slab 12 m long, 6 m deep and 3 m high, built in layers of 1 m.
class LayeringCallback : public EffectScene {
protected:
    void SetUp() override
    {
        EffectScene::SetUp();
        slab = addBox({0, 0, 0}, {12000, 6000, 3000});
    }
    KVXAnimLayeringTransCallback* start(KVXAnimation::AnimType type, KVXAnimation::TranslationType translation,
                                        double layerHeight)
    {
        record = addRecord(slab, type, translation, kStart, kEnd);
        record->setIsLayering(true);
        record->setLayerHeight(layerHeight);
        callback = new KVXAnimLayeringTransCallback(record, context().get());
        play(record, callback.get());
        return callback.get();
    }
    bool frontShows(const QImage& picture, double alongX, double alongZ) const
    {
        return !isBackground(picture, project(*front, {alongX * 12000, 0, alongZ * 3000}));
    }

    KVX3DElementObject* slab = nullptr;
    KVXAnimation* record = nullptr;
    vpe::CRefPtr<KVXAnimLayeringTransCallback> callback;
    vpe::CRefPtr<vpe::CCamera> front = cameraAt({6000, -30000, 1500}, {6000, 0, 1500});
};

TEST_F(LayeringCallback, halfwayThroughThreeLayersTheMiddleOneIsHalfBuilt)
{
    start(KVXAnimation::Construction, KVXAnimation::LeftToRight, 1000.0);
    ASSERT_EQ(callback->LayerCount(), 3);
    evaluateAt(6.0); // half of twelve days: layer 1, half swept
    const QImage picture = render(*front);
    keep(picture, "layering_half");
    struct Probe {
        double x, z;
        bool shown;
    };
    const Probe probes[] = {
        {0.2, 1.0 / 6, true},  {0.8, 1.0 / 6, true},  // the bottom layer is done
        {0.2, 0.5, true},      {0.8, 0.5, false},     // the middle one half swept
        {0.2, 5.0 / 6, false}, {0.8, 5.0 / 6, false}, // the top one not begun
    };
    for (const Probe& p : probes)
        EXPECT_EQ(frontShows(picture, p.x, p.z), p.shown) << "x " << p.x << ", z " << p.z;
    EXPECT_NE(callback->GetLayerNode()->getNodeMask(), 0u);
}

TEST_F(LayeringCallback, demolitionTakesLayersFromTheTop)
{
    start(KVXAnimation::Demolition, KVXAnimation::LeftToRight, 1000.0);
    evaluateAt(6.0);
    const QImage picture = render(*front);
    keep(picture, "layering_demolition");
    EXPECT_FALSE(frontShows(picture, 0.2, 5.0 / 6)) << "the top layer is gone";
    EXPECT_FALSE(frontShows(picture, 0.2, 0.5)) << "the middle one half gone";
    EXPECT_TRUE(frontShows(picture, 0.8, 0.5));
    EXPECT_TRUE(frontShows(picture, 0.2, 1.0 / 6));
}

TEST_F(LayeringCallback, layerCountRoundsUp)
{
    start(KVXAnimation::Construction, KVXAnimation::FrontToBack, 700.0);
    EXPECT_EQ(callback->LayerCount(), 5) << "3 m in layers of 0.7 m";
    record->setLayerHeight(0.0);
    EXPECT_EQ(callback->LayerCount(), 0);
}

TEST_F(LayeringCallback, fewerThanTwoLayersIsAPlainCut)
{
    start(KVXAnimation::Construction, KVXAnimation::LeftToRight, 2000.0);
    ASSERT_EQ(callback->LayerCount(), 2);
    record->setLayerHeight(3000.0);
    evaluateAt(6.0);
    EXPECT_EQ(callback->GetLayerNode()->getNodeMask(), 0u) << "the layer node is hidden";
    const QImage picture = render(*front);
    EXPECT_TRUE(frontShows(picture, 0.3, 0.9));
    EXPECT_FALSE(frontShows(picture, 0.7, 0.1));
}

TEST_F(LayeringCallback, verticalDirectionsNeverUseLayers)
{
    start(KVXAnimation::Construction, KVXAnimation::BottomUp, 1000.0);
    evaluateAt(6.0);
    EXPECT_EQ(callback->GetLayerNode()->getNodeMask(), 0u);
    const QImage picture = render(*front);
    EXPECT_TRUE(frontShows(picture, 0.8, 0.4));
    EXPECT_FALSE(frontShows(picture, 0.2, 0.6));
}

TEST_F(LayeringCallback, finishedConstructionShowsWholeWithoutPlanes)
{
    start(KVXAnimation::Construction, KVXAnimation::LeftToRight, 1000.0);
    evaluateAt(6.0);
    evaluateAt(20.0);
    auto* own = dynamic_cast<vpe::CStateSet*>(slab->GetSceneNode(view)->asGeode()->getDrawable(0)->getStateSet());
    ASSERT_NE(own, nullptr);
    EXPECT_FALSE(own->HasClipPlane(0));
    EXPECT_EQ(callback->GetCapNode()->getNumDrawables(), 0u);
    const QImage picture = render(*front);
    EXPECT_TRUE(frontShows(picture, 0.9, 0.9));
}

TEST_F(LayeringCallback, beforeItsStartAConstructionShowsNothingAtAll)
{
    start(KVXAnimation::Construction, KVXAnimation::LeftToRight, 1000.0);
    const double layerDays = 4.0;
    for (double before : {-1.5, -0.5, -0.01, 0.0}) {
        SCOPED_TRACE(before);
        evaluateAt(before * layerDays);
        EXPECT_EQ(callback->GetLayerNode()->getNodeMask(), 0u) << "no layer is under way";
        EXPECT_EQ(callback->GetCapNode()->getNumDrawables(), 0u);
        // The element's own plane keeps only what lies under the whole slab,
        // not on its bottom face (which flickered on the ground).
        auto* own = dynamic_cast<vpe::CStateSet*>(slab->GetSceneNode(view)->asGeode()->getDrawable(0)->getStateSet());
        ASSERT_NE(own, nullptr);
        ASSERT_TRUE(own->HasClipPlane(0));
        const osg::Vec4d plane = own->GetClipPlane(0);
        EXPECT_LT(plane.z(), 0.0);
        EXPECT_LT(plane * osg::Vec4d(6000, 3000, 0.0, 1.0), -1.0) << "the bottom face is cut away, not grazed";
    }
}

TEST_F(LayeringCallback, theLayerNodeLeavesWithTheCallback)
{
    start(KVXAnimation::Construction, KVXAnimation::LeftToRight, 1000.0);
    const vpe::CRefPtr<vpe::CSceneNode> layer = callback->GetLayerNode();
    ASSERT_EQ(layer->getNumParents(), 1u);
    viewer->GetAnimationManager()->DestroyAnimator("1");
    viewer->GetAnimationManager()->DestroyAnimation("1");
    callback = nullptr;
    EXPECT_EQ(layer->getNumParents(), 0u);
}

} // namespace
