#include "host/model/KVXDrawHelper.h"
#include "host/vpe/animation/CNodeTrack.h"
#include "host/vpe/render/CViewer.h"

#include "tests/support/FixedStepTimeSource.h"

#include <functional>

#include <gtest/gtest.h>

namespace {

// A slab lying on the ground, lit by a sun that travels towards +x at 45
// degrees: its shadow falls on the ground from x = 500 on. Seen from above,
// 3 m across a 200 pixel picture, 15 mm a pixel.
constexpr int kSize = 200;

vpe::CRefPtr<vpe::CCamera> topCamera(float x = 0.0f)
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    camera->SetProjectionType(vpe::CCamera::Orthographic);
    camera->SetPosition({x, 0.0f, 20000.0f});
    camera->SetDirection({0.0f, 0.0f, -1.0f});
    camera->SetUpDirection({0.0f, 1.0f, 0.0f});
    camera->SetOrthoWindowHeight(3000.0f);
    camera->SetNearDistance(1.0f);
    camera->SetFarDistance(100000.0f);
    return camera;
}

osg::Node* box(const osg::Vec3d& min, const osg::Vec3d& max, const QColor& color)
{
    vpe::CRefPtr<vpe::CBody> body = vpe::CBody::CreateBox(min, max);
    return KVXDrawHelper::CreateBodyNode(*body, color);
}

class ShadowMap : public ::testing::Test {
public:
    void SetUp() override
    {
        viewer = new vpe::CViewer;
        viewer->SetTimeSource(new FixedStepTimeSource(1.0));
        viewer->SetBackgroundColor(Qt::black);
        root()->addChild(box({-1500, -1500, -100}, {1500, 1500, 0}, Qt::white));
        slab = new vpe::CGroupNode;
        slab->addChild(box({-500, -500, 1000}, {500, 500, 1200}, Qt::red));
        root()->addChild(slab);
        sun()->SetDirection(osg::Vec3d(1.0, 0.0, -1.0));
    }
    vpe::CGroupNode* root() { return viewer->GetScene()->GetRootNode(); }
    vpe::CLight* sun() { return viewer->GetScene()->FindLight(vpe::CScene::kShadowLightName); }
    unsigned int renders() { return viewer->GetScene()->GetShadowMap()->GetRenderCount(); }
    // Brightness of the ground at model (x, 0), seen from a camera above
    // cameraX.
    int groundAt(double x, float cameraX = 0.0f)
    {
        QImage picture;
        EXPECT_TRUE(viewer->RenderImage(*topCamera(cameraX), kSize, kSize, picture));
        return qGray(picture.pixel(int(kSize / 2 + (x - cameraX) / 15.0), kSize / 2));
    }

    vpe::CRefPtr<vpe::CViewer> viewer;
    osg::ref_ptr<vpe::CGroupNode> slab;
};

TEST_F(ShadowMap, shadowFallsAwayFromTheSun)
{
    const int shaded = groundAt(1000), lit = groundAt(-1200);
    EXPECT_LT(shaded, lit / 2) << shaded << " " << lit;
}

TEST_F(ShadowMap, movingTheCameraKeepsTheMapWhereItBelongs)
{
    const int shaded = groundAt(1000);
    EXPECT_EQ(renders(), 1u);
    // Another view of the same shadow: the map is looked up, not drawn.
    EXPECT_EQ(groundAt(1000, 600.0f), shaded);
    EXPECT_GT(groundAt(-800, 600.0f), 2 * shaded);
    EXPECT_EQ(renders(), 1u);
}

struct Change {
    const char* name;
    std::function<void(ShadowMap&)> apply;
    bool redraws;
};

class ShadowMapChange : public ShadowMap, public ::testing::WithParamInterface<Change> {
public:
    static void moveSlab(ShadowMap& test, bool withCamera)
    {
        vpe::CAnimation* animation = test.viewer->GetAnimationManager()->CreateAnimation("lift", 10.0);
        vpe::CAnimationTrack* track =
            withCamera ? static_cast<vpe::CAnimationTrack*>(animation->CreateCameraTrack())
                       : static_cast<vpe::CAnimationTrack*>(animation->CreateNodeTrack(test.slab.get()));
        track->AddKeyFrame({0.0, osg::Vec3d(), osg::Quat()});
        track->AddKeyFrame({10.0, osg::Vec3d(0.0, 0.0, 300.0), osg::Quat()});
        test.viewer->GetAnimationManager()->CreateAnimator("lift", animation)->Enable();
        test.viewer->AdvanceFrame();
    }
};

TEST_P(ShadowMapChange, drawsTheMapAgainOnlyWhenShadowsMayHaveMoved)
{
    groundAt(1000);
    ASSERT_EQ(renders(), 1u);
    GetParam().apply(*this);
    groundAt(1000);
    EXPECT_EQ(renders(), GetParam().redraws ? 2u : 1u);
}

INSTANTIATE_TEST_SUITE_P(
    Changes, ShadowMapChange,
    ::testing::Values(
        Change{"sceneMarkedChanged", [](ShadowMap& t) { t.viewer->SetDirty(); }, true},
        Change{"lightMarkedDirty", [](ShadowMap& t) { t.sun()->SetShadowDirty(true); }, true},
        Change{"lightTurned", [](ShadowMap& t) { t.sun()->SetDirection(osg::Vec3d(-1.0, 0.0, -1.0)); }, true},
        Change{"casterAdded",
               [](ShadowMap& t) { t.root()->addChild(box({1000, 1000, 0}, {1400, 1400, 3000}, Qt::blue)); }, true},
        Change{"nodeTrackPlayed", [](ShadowMap& t) { ShadowMapChange::moveSlab(t, false); }, true},
        Change{"cameraTrackPlayed", [](ShadowMap& t) { ShadowMapChange::moveSlab(t, true); }, false},
        Change{"cameraSet", [](ShadowMap& t) { t.viewer->SetCamera(*topCamera(300.0f)); }, false},
        Change{"nothing", [](ShadowMap&) {}, false}),
    [](const ::testing::TestParamInfo<Change>& info) { return std::string(info.param.name); });

TEST_F(ShadowMap, lightTurnedToTheOtherSideMovesTheShadow)
{
    EXPECT_LT(groundAt(1000), groundAt(-1000) / 2);
    sun()->SetDirection(osg::Vec3d(-1.0, 0.0, -1.0));
    EXPECT_LT(groundAt(-1000), groundAt(1000) / 2);
}

} // namespace
