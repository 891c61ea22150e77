#include "host/model/KVXDrawHelper.h"
#include "host/vpe/geometry/CBody.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CEffect.h"

#include <osg/Geode>

#include <gtest/gtest.h>

namespace {

// A green box seen from the front, its faces drawn through an effect.
class Effect : public ::testing::Test {
protected:
    void SetUp() override
    {
        viewer = new vpe::CViewer;
        viewer->GetScene()->SetShadowsEnabled(false);
        vpe::CRefPtr<vpe::CBody> box = vpe::CBody::CreateBox({-1000, -1000, -1000}, {1000, 1000, 1000});
        node = KVXDrawHelper::CreateBodyNode(*box, QColor(40, 200, 40));
        viewer->GetScene()->GetRootNode()->addChild(node.get());
        faces = node->asGeode()->getDrawable(0);
        camera = new vpe::CCamera;
        camera->SetLookAt({0, -10000, 0}, {0, 0, 0});
    }
    QColor centre()
    {
        QImage picture;
        EXPECT_TRUE(viewer->RenderImage(*camera, 64, 64, picture));
        return picture.pixelColor(32, 32);
    }
    static vpe::CStateSet* coloured(const QColor& colour)
    {
        vpe::CStateSet* state = KVXDrawHelper::FaceStateSet(colour)->Clone();
        return state;
    }

    vpe::CRefPtr<vpe::CViewer> viewer;
    vpe::CRefPtr<osg::Node> node;
    osg::Drawable* faces = nullptr;
    vpe::CRefPtr<vpe::CCamera> camera;
};

TEST_F(Effect, passesDrawInPlaceOfTheRenderablesOwnStateSet)
{
    const QColor plain = centre();
    EXPECT_GT(plain.green(), plain.red() + 60);

    vpe::CRefPtr<vpe::CEffect> effect = new vpe::CEffect;
    vpe::CRefPtr<vpe::CTechnique> technique = new vpe::CTechnique;
    technique->AddStateSet(coloured(QColor(220, 30, 30)));
    effect->AddTechnique(technique.get());
    vpe::CEffect::SetEffect(faces, effect.get());
    EXPECT_EQ(vpe::CEffect::GetEffect(faces), effect.get());
    const QColor red = centre();
    EXPECT_GT(red.red(), red.green() + 60) << "drawn with the pass";

    technique->RemoveStateSet(0);
    const QColor back = centre();
    EXPECT_GT(back.green(), back.red() + 60) << "a technique without passes draws as usual";

    vpe::CEffect::SetEffect(faces, nullptr);
    EXPECT_EQ(vpe::CEffect::GetEffect(faces), nullptr);
}

TEST_F(Effect, techniquesAndPassesAreKeptInOrder)
{
    vpe::CRefPtr<vpe::CTechnique> technique = new vpe::CTechnique;
    vpe::CRefPtr<vpe::CStateSet> first = new vpe::CStateSet;
    vpe::CRefPtr<vpe::CStateSet> second = new vpe::CStateSet;
    technique->AddStateSet(first.get());
    technique->AddStateSet(nullptr);
    technique->AddStateSet(second.get());
    ASSERT_EQ(technique->GetNumStateSets(), 2u);
    EXPECT_EQ(technique->GetStateSet(0), first.get());
    EXPECT_EQ(technique->GetStateSet(1), second.get());
    EXPECT_EQ(technique->GetStateSet(2), nullptr);
    vpe::CRefPtr<vpe::CEffect> effect = new vpe::CEffect;
    effect->AddTechnique(technique.get());
    EXPECT_EQ(effect->GetTechnique(0), technique.get());
    EXPECT_EQ(effect->GetTechnique(1), nullptr);
}

} // namespace
