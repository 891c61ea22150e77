#include "host/db/KVXSaveLoadXml.h"
#include "host/model/KVX3dsBaseObject.h"
#include "host/model/KVXGlobalInfo.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfDbBuildingInstance.h"
#include "host/model/PfGiWorldDraw.h"

#include <QDir>
#include <QTemporaryDir>

#include <osg/Geode>
#include <osg/Geometry>

#include <gtest/gtest.h>

namespace {

template <class T>
T reloaded(T& original)
{
    KVXSaveLoadXml xml;
    original.Save(xml);
    T copy;
    copy.Load(xml);
    EXPECT_TRUE(xml.unconsumedKeys().isEmpty()) << xml.unconsumedKeys().join(',').toStdString();
    return copy;
}

TEST(Elements, craneKeepsItsDataThroughSaveAndLoad)
{
    KVXTowerCraneObject crane;
    crane.SetName(L"塔吊-1");
    crane.SetVisibility(false);
    crane.SetColor(QColor(10, 20, 30, 128));
    crane.SetLineType(2);
    crane.SetLineWidth(2.5);
    crane.SetPoints({{1, 2, 3}, {4, 5, 6}});
    crane.SetClosed(true);
    crane.SetBodyColor(QColor(250, 200, 0, 255));
    crane.SetTransparency(40);
    crane.SetPosition({1000.5, -2000.25, 300});
    crane.SetTowerHeight(58000);
    crane.SetJibLength(60000.0);
    crane.SetBeingAnimated(1);

    KVXTowerCraneObject copy = reloaded(crane);
    EXPECT_EQ(copy.GetName(), L"塔吊-1");
    EXPECT_FALSE(copy.GetVisibility());
    EXPECT_EQ(copy.GetColor(), QColor(10, 20, 30, 128));
    EXPECT_EQ(copy.GetLineType(), 2);
    EXPECT_EQ(copy.GetLineWidth(), 2.5);
    EXPECT_EQ(copy.GetPoints(), crane.GetPoints());
    EXPECT_TRUE(copy.IsClosed());
    EXPECT_EQ(copy.GetBodyColor(), QColor(250, 200, 0, 255));
    EXPECT_EQ(copy.GetTransparency(), 40);
    EXPECT_EQ(copy.GetPosition(), crane.GetPosition());
    EXPECT_EQ(copy.GetTowerHeight(), 58000);
    EXPECT_EQ(copy.GetJibLength(), 60000.0);
    // A playback flag: a loaded crane is never "being animated".
    EXPECT_EQ(copy.GetBeingAnimated(), 0);
}

TEST(Elements, namedElementsOfOtherKindsKeepTheirData)
{
    KVX3dsBaseObject mesh;
    mesh.SetName(L"truck");
    mesh.SetSourcePath(L"/data/truck.3ds");
    mesh.SetPosition({1, 2, 3});
    KVX3dsBaseObject meshCopy = reloaded(mesh);
    EXPECT_EQ(meshCopy.GetName(), L"truck");
    EXPECT_EQ(meshCopy.GetSourcePath(), L"/data/truck.3ds");
    EXPECT_EQ(meshCopy.GetPosition(), mesh.GetPosition());

    PfDbBuildingInstance building;
    building.SetName(L"1号楼");
    building.SetRotation(33.5);
    PfDbBuildingInstance buildingCopy = reloaded(building);
    EXPECT_EQ(buildingCopy.GetName(), L"1号楼");
    EXPECT_EQ(buildingCopy.GetRotation(), 33.5);
}

TEST(Elements, transparencyIsAPercentage)
{
    KVX3DElementObject element;
    const std::pair<int, int> rows[] = {{-5, 0}, {0, 0}, {55, 55}, {100, 100}, {250, 100}};
    for (const auto& row : rows) {
        element.SetTransparency(row.first);
        EXPECT_EQ(element.GetTransparency(), row.second) << row.first;
    }
}

TEST(Elements, copyFromCopiesWhatTheClassesShare)
{
    KVXTowerCraneObject source;
    source.SetColor(Qt::green);
    source.SetBodyColor(Qt::blue);
    source.SetTowerHeight(12345);
    KVX3DElementObject plain;
    EXPECT_EQ(plain.CopyFrom(&source), Pfad::eOk);
    EXPECT_EQ(plain.GetBodyColor(), QColor(Qt::blue));
    EXPECT_EQ(plain.GetColor(), QColor(Qt::green));

    KVXTowerCraneObject crane;
    PfDbBuildingInstance building;
    EXPECT_EQ(crane.CopyFrom(&building), Pfad::eInvalidInput);
    EXPECT_EQ(crane.CopyFrom(nullptr), Pfad::eInvalidInput);
}

TEST(Elements, damagedPointCountDoesNotRunAway)
{
    KVXSaveLoadXml xml;
    xml.setInt(QStringLiteral("PointCount"), 2000000000);
    xml.setVector(QStringLiteral("Point_0"), {1, 2, 3});
    KVXBaseObject object;
    object.Load(xml);
    ASSERT_LE(object.GetPointCount(), xml.size());
    EXPECT_EQ(object.GetPoints().front(), vpe::CVec3<double>(1, 2, 3));
}

struct Drawn {
    osg::ref_ptr<osg::Node> node;
    bool drew = false;
};

Drawn draw(KVXBaseObject& object, PfGiWorldDraw::RegenType type)
{
    PfGiWorldDraw context(type);
    vpe::CSceneNode* raw = nullptr;
    Drawn result;
    result.drew = type == PfGiWorldDraw::kPlan2d ? object.draw2d(&context, raw) : object.draw3d(&context, raw);
    result.node = raw;
    return result;
}

TEST(Elements, polylineDrawsItsPointsInItsColour)
{
    KVXBaseObject route;
    route.SetColor(QColor(255, 0, 0));
    route.SetPoints({{0, 0, 100}, {1000, 0, 200}, {1000, 1000, 300}});
    for (bool closed : {false, true}) {
        route.SetClosed(closed);
        for (auto type : {PfGiWorldDraw::kPlan2d, PfGiWorldDraw::kModel3d}) {
            Drawn drawn = draw(route, type);
            ASSERT_TRUE(drawn.drew);
            auto* geode = drawn.node->asGeode();
            ASSERT_NE(geode, nullptr);
            auto* geometry = geode->getDrawable(0)->asGeometry();
            auto* vertices = static_cast<osg::Vec3Array*>(geometry->getVertexArray());
            ASSERT_EQ(vertices->size(), 3u);
            EXPECT_EQ((*vertices)[2].z(), type == PfGiWorldDraw::kPlan2d ? 0.0f : 300.0f);
            auto* arrays = static_cast<osg::DrawArrays*>(geometry->getPrimitiveSet(0));
            EXPECT_EQ(arrays->getMode(), GLenum(closed ? GL_LINE_LOOP : GL_LINE_STRIP));
            auto* colors = static_cast<osg::Vec4Array*>(geometry->getColorArray());
            EXPECT_EQ((*colors)[0], osg::Vec4(1, 0, 0, 1));
        }
    }
}

TEST(Elements, hiddenOrDegeneratePolylinesDrawNothing)
{
    KVXBaseObject route;
    route.SetPoints({{0, 0, 0}, {1, 1, 1}});
    route.SetVisibility(false);
    EXPECT_FALSE(draw(route, PfGiWorldDraw::kModel3d).drew);
    route.SetVisibility(true);
    route.SetPoints({{0, 0, 0}});
    Drawn drawn = draw(route, PfGiWorldDraw::kModel3d);
    EXPECT_FALSE(drawn.drew);
    EXPECT_EQ(drawn.node, nullptr);
}

TEST(GlobalInfo, tempProjectDirectoryIsMadeOnDemand)
{
    QTemporaryDir base;
    const QString wanted = base.filePath(QStringLiteral("project/thumbs"));
    KVXGlobalInfo::getInstance()->setTempProjectPath((wanted + QStringLiteral("/")).toStdWString());
    EXPECT_FALSE(QDir(wanted).exists());
    EXPECT_EQ(KVXGlobalInfo::getInstance()->getTempProjectPath(), wanted.toStdWString());
    EXPECT_TRUE(QDir(wanted).exists());
}

} // namespace
