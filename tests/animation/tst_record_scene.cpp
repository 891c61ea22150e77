#include "animation/KVXAnimation.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/vpe/render/CViewer.h"

#include "tests/support/ModuleEnvironment.h"

#include <gtest/gtest.h>

namespace {

// A storey from 1 m to 4 m high, 10 m by 6 m, centred on (5, 3).
class RecordScene : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        view = PfGsModelView::Attach(document);
        storey = new KVX3DElementObject();
        storey->AddBody(vpe::CBody::CreateBox({0, 0, 1000}, {10000, 6000, 4000}));
        document->GetDatabase()->GetModelSpace()->Add(storey);
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }
    qint64 storeyId() const { return static_cast<qint64>(storey->GetHandle()); }
    osg::Group* root() const { return view->GetViewer()->GetScene()->GetRootNode(); }

    PfDbDocument* document = nullptr;
    PfGsModelView* view = nullptr;
    KVX3DElementObject* storey = nullptr;
};

TEST_F(RecordScene, queriesAnswerFromTheElementsNode)
{
    KVXAnimation record(1, storeyId(), KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    ASSERT_EQ(record.getNode(), storey->GetSceneNode(view));
    EXPECT_DOUBLE_EQ(record.getMinimumElevation(), 1000.0);
    EXPECT_DOUBLE_EQ(record.getMaxmumElevation(), 4000.0);
    EXPECT_EQ(record.calCenterPt(), vpe::CVec3<double>(5000, 3000, 2500));
    EXPECT_EQ(record.getCenterPt(), record.calCenterPt());
}

TEST_F(RecordScene, verticalRecordsRunBetweenTheElementsElevations)
{
    KVXAnimation topDown(1, storeyId(), KVXAnimation::Construction, KVXAnimation::TopDown);
    EXPECT_DOUBLE_EQ(topDown.getAnimStartPoint().z(), 4000.0);
    EXPECT_DOUBLE_EQ(topDown.getAnimEndPoint().z(), 1000.0);
    KVXAnimation bottomUp(2, storeyId(), KVXAnimation::Demolition, KVXAnimation::BottomUp);
    EXPECT_DOUBLE_EQ(bottomUp.getAnimStartPoint().z(), 1000.0);
    EXPECT_DOUBLE_EQ(bottomUp.getAnimEndPoint().z(), 4000.0);
}

TEST_F(RecordScene, neutralWithoutViewElementOrDocument)
{
    KVXAnimation missing(1, storeyId() + 1000, KVXAnimation::Construction, KVXAnimation::TopDown);
    EXPECT_EQ(missing.getNode(), nullptr);
    EXPECT_EQ(missing.getAnimStartPoint().z(), 0.0);
    EXPECT_EQ(missing.calCenterPt(), vpe::CVec3<double>(0, 0, 0));

    document->SetActiveView(nullptr);
    KVXAnimation noView(2, storeyId(), KVXAnimation::Construction, KVXAnimation::BottomUp);
    EXPECT_EQ(noView.getNode(), nullptr);
    EXPECT_EQ(noView.getMaxmumElevation(), 0.0);

    PfDocManagerPtr()->SetCurrentDocument(nullptr);
    EXPECT_EQ(noView.getNode(), nullptr);
}

TEST_F(RecordScene, pathRecordRemembersTheParentAndPutsTheNodeBack)
{
    KVXAnimation path(1, storeyId(), KVXAnimation::Path, KVXAnimation::LeftToRight);
    ASSERT_EQ(path.getRouteParentNode(), root());

    // Playback puts a route node between the parent and the element.
    osg::ref_ptr<osg::Node> node = path.getNode();
    osg::ref_ptr<vpe::CGroupNode> route = new vpe::CGroupNode;
    route->addChild(node);
    root()->removeChild(node);
    root()->addChild(route);
    path.setRouteNode(route);

    path.resumeNodeOfRouteAnimation();
    EXPECT_EQ(path.getRouteNode(), nullptr);
    EXPECT_TRUE(root()->containsNode(node.get()));
    EXPECT_FALSE(root()->containsNode(route.get()));
    EXPECT_EQ(path.getNode(), node.get());
}

TEST_F(RecordScene, resumeLeavesAnEmptyOrMissingRouteAlone)
{
    KVXAnimation path(1, storeyId(), KVXAnimation::Path, KVXAnimation::LeftToRight);
    osg::ref_ptr<vpe::CGroupNode> empty = new vpe::CGroupNode;
    root()->addChild(empty);
    path.setRouteNode(empty);
    path.resumeNodeOfRouteAnimation();
    EXPECT_EQ(path.getRouteNode(), empty.get());
    EXPECT_TRUE(root()->containsNode(empty.get()));
}

} // namespace
