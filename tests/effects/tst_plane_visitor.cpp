#include "effects/KVXAnimPlaneVisitor.h"
#include "host/vpe/scene/CEffect.h"
#include "host/vpe/scene/CStateSet.h"

#include "tests/support/ModuleEnvironment.h"

#include <osg/Geometry>

#include <gtest/gtest.h>

namespace {

// Two elements drawn alike: their renderables share one state set, as the
// shared state sets of the drawing helper make them.
class PlaneVisitor : public ::testing::Test {
protected:
    void SetUp() override
    {
        shared = new vpe::CStateSet;
        for (auto* node : {&first, &second}) {
            *node = new vpe::CVisualNode;
            vpe::CRefPtr<osg::Geometry> renderable = new osg::Geometry;
            renderable->setStateSet(shared.get());
            (*node)->addDrawable(renderable.get());
        }
    }
    static vpe::CStateSet* stateOf(vpe::CVisualNode* node)
    {
        return dynamic_cast<vpe::CStateSet*>(node->getDrawable(0)->getStateSet());
    }

    vpe::CRefPtr<vpe::CStateSet> shared;
    vpe::CRefPtr<vpe::CVisualNode> first;
    vpe::CRefPtr<vpe::CVisualNode> second;
};

TEST_F(PlaneVisitor, cutsOnlyTheNodeItVisits)
{
    const KVXAnimPlane plane{{2500, 0, 0}, {-1, 0, 0}};
    KVXAnimPlaneVisitor cut(&plane, false, 1);
    first->accept(cut);
    ASSERT_NE(stateOf(first), shared.get()) << "a private copy was made first";
    EXPECT_EQ(stateOf(first)->GetClipPlane(1), osg::Vec4d(-1, 0, 0, 2500));
    EXPECT_FALSE(shared->HasClipPlane(1));
    EXPECT_EQ(stateOf(second), shared.get());

    // The private state set is used again, not copied again.
    vpe::CStateSet* own = stateOf(first);
    first->accept(cut);
    EXPECT_EQ(stateOf(first), own);

    KVXAnimPlaneVisitor uncut(nullptr, true, 1);
    first->accept(uncut);
    EXPECT_FALSE(stateOf(first)->HasClipPlane(1));
}

TEST_F(PlaneVisitor, reachesThePassesOfEffects)
{
    vpe::CRefPtr<vpe::CEffect> effect = new vpe::CEffect;
    vpe::CRefPtr<vpe::CTechnique> technique = new vpe::CTechnique;
    vpe::CRefPtr<vpe::CStateSet> pass = new vpe::CStateSet;
    technique->AddStateSet(pass.get());
    effect->AddTechnique(technique.get());
    vpe::CEffect::SetEffect(first->getDrawable(0), effect.get());

    const KVXAnimPlane plane{{0, 0, 300}, {0, 0, 1}};
    KVXAnimPlaneVisitor cut(&plane, false, 0);
    first->accept(cut);
    EXPECT_EQ(pass->GetClipPlane(0), osg::Vec4d(0, 0, 1, -300));
    KVXAnimPlaneVisitor uncut(nullptr, true, 0);
    first->accept(uncut);
    EXPECT_FALSE(pass->HasClipPlane(0));
}

TEST_F(PlaneVisitor, withNeitherPlaneNorRemoveNothingChanges)
{
    KVXAnimPlaneVisitor idle(nullptr, false, 0);
    first->accept(idle);
    EXPECT_EQ(stateOf(first), shared.get());
}

} // namespace
