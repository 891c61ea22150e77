#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVXDrawHelper.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfGsUtility.h"
#include "host/vpe/render/CViewer.h"

#include <osg/ComputeBoundsVisitor>
#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Material>

#include <gtest/gtest.h>

namespace {

vpe::CRefPtr<vpe::CCamera> topCamera(double across)
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    camera->SetProjectionType(vpe::CCamera::Orthographic);
    camera->SetPosition({0.0f, 0.0f, 200000.0f});
    camera->SetDirection({0.0f, 0.0f, -1.0f});
    camera->SetUpDirection({0.0f, 1.0f, 0.0f});
    camera->SetOrthoWindowHeight(float(across));
    return camera;
}

// Pixels of a 200x200 picture from above whose colour passes the test.
int countPixels(vpe::CViewer* viewer, double across, const QRect& area, bool (*test)(QRgb))
{
    QImage picture;
    EXPECT_TRUE(viewer->RenderImage(*topCamera(across), 200, 200, picture));
    int count = 0;
    for (int x = area.left(); x <= area.right(); ++x) {
        for (int y = area.top(); y <= area.bottom(); ++y)
            count += test(picture.pixel(x, y));
    }
    return count;
}

bool isRed(QRgb c) { return qRed(c) > 150 && qGreen(c) < 90 && qBlue(c) < 90; }
bool isYellow(QRgb c) { return qRed(c) > 120 && qGreen(c) > 80 && qBlue(c) < 60; }

class ElementDrawing : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        view = PfGsModelView::Attach(document);
        view->GetViewer()->SetBackgroundColor(Qt::white);
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }
    PfDbObjContainer* space() { return document->GetDatabase()->GetModelSpace(); }

    PfDbDocument* document = nullptr;
    PfGsModelView* view = nullptr;
};

TEST_F(ElementDrawing, viewFollowsTheDatabase)
{
    auto* element = new KVX3DElementObject();
    element->AddBody(vpe::CBody::CreateBox({0, 0, 0}, {1000, 1000, 3000}));
    space()->Add(element);
    ASSERT_NE(element->GetSceneNode(view), nullptr);
    EXPECT_EQ(PfGsUtility::CurrentViewer(), view->GetViewer());

    PfDbTransactionManager* transactions = document->GetDatabase()->TransactionManager();
    transactions->StartTransaction();
    space()->Remove(element);
    transactions->EndTransaction();
    EXPECT_EQ(view->GetSceneNode(element->GetHandle()), nullptr);
    transactions->Undo();
    ASSERT_NE(view->GetSceneNode(element->GetHandle()), nullptr);
    osg::ComputeBoundsVisitor bounds;
    view->GetSceneNode(element->GetHandle())->accept(bounds);
    EXPECT_FLOAT_EQ(bounds.getBoundingBox().zMax(), 3000.0f);
}

TEST_F(ElementDrawing, hiddenPolylineDrawsNothing)
{
    auto* route = new KVXBaseObject();
    route->SetColor(Qt::red);
    route->SetLineWidth(4.0);
    route->SetPoints({{-2000, 0, 0}, {2000, 0, 0}});
    space()->Add(route);
    const QRect band(10, 90, 180, 20);
    EXPECT_GT(countPixels(view->GetViewer(), 6000, band, isRed), 100);

    route->SetVisibility(false);
    route->regenerate();
    EXPECT_EQ(route->GetSceneNode(view), nullptr);
    EXPECT_EQ(countPixels(view->GetViewer(), 6000, band, isRed), 0);

    PfGsUtility::ShowObject(route->GetHandle());
    EXPECT_TRUE(route->GetVisibility());
    EXPECT_GT(countPixels(view->GetViewer(), 6000, band, isRed), 100);
}

TEST_F(ElementDrawing, craneDrawsFourPartsThatMoveApart)
{
    auto* crane = new KVXTowerCraneObject();
    crane->SetTowerHeight(65000);
    crane->SetJibLength(50000.0);
    space()->Add(crane);
    auto* group = dynamic_cast<vpe::CGroupNode*>(crane->GetSceneNode(view));
    ASSERT_NE(group, nullptr);
    ASSERT_EQ(group->getNumChildren(), 4u);
    // Ties every 20 m, none in the last 10 m under the top.
    auto* ties = group->getChild(KVXTowerCraneObject::TiesPart)->asGroup();
    ASSERT_NE(ties, nullptr);
    EXPECT_EQ(ties->getNumChildren(), 2u);

    // From above, 120 m across: the jib reaches along +x from the middle.
    vpe::CViewer* viewer = view->GetViewer();
    const QRect alongX(130, 95, 40, 10), alongY(95, 30, 10, 40), mast(97, 97, 6, 6);
    // The jib is two pixels wide at this scale.
    EXPECT_GT(countPixels(viewer, 120000, alongX, isYellow), 10);
    EXPECT_EQ(countPixels(viewer, 120000, alongY, isYellow), 0);
    const int mastPixels = countPixels(viewer, 120000, mast, isYellow);

    auto* jib = dynamic_cast<vpe::CGroupNode*>(group->getChild(KVXTowerCraneObject::JibPart));
    ASSERT_NE(jib, nullptr);
    jib->setMatrix(osg::Matrix::rotate(osg::PI_2, osg::Vec3d(0, 0, 1)));
    EXPECT_EQ(countPixels(viewer, 120000, alongX, isYellow), 0);
    EXPECT_GT(countPixels(viewer, 120000, alongY, isYellow), 10);
    EXPECT_GT(mastPixels, 4);
    EXPECT_NEAR(countPixels(viewer, 120000, mast, isYellow), mastPixels, 3);

    auto* upper = dynamic_cast<vpe::CGroupNode*>(group->getChild(KVXTowerCraneObject::UpperWorksPart));
    ASSERT_NE(upper, nullptr);
    upper->setMatrix(osg::Matrix::translate(0, 0, -20000));
    osg::ComputeBoundsVisitor bounds;
    upper->accept(bounds);
    EXPECT_LT(bounds.getBoundingBox().zMax(), 65000.0f - 20000.0f + 9000.0f);
}

TEST(ElementColours, aSolidElementsEntityColourIsTheColourOfItsEdges)
{
    // Effects that draw beside an element (the caps of a cut) take its
    // entity colour for their edges: they must match the element's own.
    KVX3DElementObject solid;
    solid.SetBodyColor(QColor(170, 170, 165));
    solid.SetTransparency(40);
    solid.AddBody(vpe::CBody::CreateBox({0, 0, 0}, {1000, 1000, 1000}));
    vpe::CSceneNode* node = nullptr;
    ASSERT_TRUE(solid.draw3d(nullptr, node));
    osg::ref_ptr<osg::Node> owner = node;
    auto* visual = node->asGeode();
    ASSERT_NE(visual, nullptr);
    int lines = 0;
    for (unsigned int i = 0; i < visual->getNumDrawables(); ++i) {
        const osg::Geometry* geometry = visual->getDrawable(i)->asGeometry();
        if (!geometry || geometry->getPrimitiveSet(0)->getMode() != GL_LINES)
            continue;
        ++lines;
        const auto* material = dynamic_cast<const osg::Material*>(
            geometry->getStateSet()->getAttribute(osg::StateAttribute::MATERIAL));
        ASSERT_NE(material, nullptr);
        const osg::Vec4 drawn = material->getDiffuse(osg::Material::FRONT);
        const QColor entity = solid.EntityColor();
        EXPECT_NEAR(drawn.r(), entity.redF(), 1e-3);
        EXPECT_NEAR(drawn.g(), entity.greenF(), 1e-3);
        EXPECT_NEAR(drawn.a(), entity.alphaF(), 1e-3);
    }
    EXPECT_EQ(lines, 1);
    KVX3DElementObject polyline;
    polyline.SetColor(Qt::white);
    EXPECT_EQ(polyline.EntityColor(), QColor(Qt::white)) << "without a body it is a polyline in its own colour";
}

TEST(Tessellation, flatFacesAndFeatureEdges)
{
    vpe::CRefPtr<vpe::CBody> box = vpe::CBody::CreateBox({0, 0, 0}, {1, 2, 3});
    std::vector<osg::Vec3f> vertices, normals, edges;
    KVXDrawHelper::TessellateShell(*box, vertices, normals, edges);
    EXPECT_EQ(vertices.size(), 36u);
    EXPECT_EQ(normals.size(), vertices.size());
    // The twelve edges of the box, not the diagonals that split its faces.
    EXPECT_EQ(edges.size(), 24u);
    for (std::size_t i = 0; i < vertices.size(); i += 3) {
        const osg::Vec3f centre = (vertices[i] + vertices[i + 1] + vertices[i + 2]) / 3.0f;
        const osg::Vec3f outwards = centre - osg::Vec3f(0.5f, 1.0f, 1.5f);
        EXPECT_GT(normals[i] * outwards, 0.0f) << "face " << i / 3 << " faces inwards";
    }
}

TEST(Bodies, extrusionsAreClosedWithTheirVolume)
{
    struct Row {
        const char* name;
        std::vector<osg::Vec2d> outline;
        double area;
    };
    const Row rows[] = {
        {"squareClockwise", {{0, 0}, {0, 10}, {10, 10}, {10, 0}}, 100.0},
        {"lShape", {{0, 0}, {10, 0}, {10, 2}, {2, 2}, {2, 10}, {0, 10}}, 36.0},
        {"uShape", {{0, 0}, {9, 0}, {9, 9}, {6, 9}, {6, 3}, {3, 3}, {3, 9}, {0, 9}}, 63.0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        vpe::CRefPtr<vpe::CBody> prism = vpe::CBody::CreateExtrusion(row.outline, 1.0, 4.0);
        ASSERT_NE(prism, nullptr);
        EXPECT_TRUE(prism->IsClosed());
        EXPECT_NEAR(prism->GetVolume(), row.area * 3.0, 1e-9);
    }
    EXPECT_EQ(vpe::CBody::CreateExtrusion({{0, 0}, {1, 1}}, 0, 1), nullptr);
    EXPECT_EQ(vpe::CBody::CreateExtrusion({{0, 0}, {1, 1}, {2, 2}}, 0, 1), nullptr);
}

} // namespace
