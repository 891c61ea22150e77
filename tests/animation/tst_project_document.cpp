#include "animation/KVXTowerAnimation.h"
#include "host/db/KVXSaveLoadXml.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbLoadReport.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/KVXGlobalInfo.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/rx/PfRxClass.h"
#include "keyframe/KVXCameraKeyFramesTrack.h"
#include "keyframe/KVXDateKeyFramesTrack.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QDate>
#include <QTemporaryDir>

#include <osg/io_utils>

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace {

// What a live object writes of itself, by handle.
struct SavedObject {
    std::wstring className;
    std::vector<KVXSaveLoadXml::Property> properties;
};

std::map<PfDbHandle, SavedObject> savedObjects(PfDbDatabase& database)
{
    std::map<PfDbHandle, SavedObject> saved;
    for (PfDbObject* object : database.AllObjects()) {
        if (object->IsErased())
            continue;
        KVXSaveLoadXml xml;
        object->Save(xml);
        saved[object->GetHandle()] = {object->IsA()->Name(), xml.properties()};
    }
    return saved;
}

void expectSameProperties(const std::vector<KVXSaveLoadXml::Property>& actual,
                          const std::vector<KVXSaveLoadXml::Property>& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        const KVXSaveLoadXml::Property& a = actual[i];
        const KVXSaveLoadXml::Property& e = expected[i];
        SCOPED_TRACE(e.key.toStdString());
        EXPECT_EQ(a.key, e.key);
        EXPECT_EQ(a.type, e.type);
        EXPECT_EQ(a.integer, e.integer);
        for (int c = 0; c < 3; ++c)
            EXPECT_EQ(a.number[c], e.number[c]) << "component " << c;
        EXPECT_EQ(a.text.toStdString(), e.text.toStdString());
        EXPECT_EQ(a.handles, e.handles);
    }
}

KVXTowerLiftingData step(const QDate& date, int height)
{
    KVXTowerLiftingData data;
    data.date = date;
    data.height = height;
    return data;
}

vpe::CRefPtr<vpe::CCamera> makeCamera(const osg::Vec3f& position, const osg::Vec3f& direction)
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera();
    camera->SetPosition(position);
    camera->SetDirection(direction);
    camera->SetUpDirection({0.0f, 0.0f, 1.0f});
    camera->SetFieldOfView(52.3f);
    return camera;
}

// A small site: two buildings and a crane, schedule records of every kind
// for them, and both key-frame tracks.
class ProjectDocument : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_directory.isValid());
        KVXGlobalInfo::getInstance()->setTempProjectPath(m_directory.path().toStdWString());
        m_document = PfDocManagerPtr()->NewDocument();
        buildSite(*m_document->GetDatabase());
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }

    void add(PfDbDatabase& database, PfDbObject* object)
    {
        ASSERT_EQ(database.GetModelSpace()->Add(object), Pfad::eOk);
    }

    void buildSite(PfDbDatabase& database)
    {
        auto* building = new KVX3DElementObject();
        building->SetName(L"一号楼");
        building->SetPoints({{0.0, 0.0, 0.0}, {24000.0, 0.0, 0.0}, {24000.0, 12000.0, 0.0}});
        building->SetClosed(true);
        building->SetBodyColor(QColor(180, 160, 140));
        building->SetTransparency(35);
        add(database, building);
        auto* shed = new KVX3DElementObject();
        shed->SetName(L"钢筋棚");
        add(database, shed);
        auto* crane = new KVXTowerCraneObject();
        crane->SetName(L"塔吊-1");
        crane->SetPosition({-5000.5, 8000.25, 0.0});
        crane->SetTowerHeight(52000);
        add(database, crane);
        m_buildingId = static_cast<qint64>(building->GetHandle());
        m_craneId = static_cast<qint64>(crane->GetHandle());
        const auto shedId = static_cast<qint64>(shed->GetHandle());

        auto* rising = new KVXAnimation(1, m_buildingId, KVXAnimation::Construction, KVXAnimation::TopDown);
        rising->setStartDate(QDate(2021, 3, 1));
        rising->setEndDate(QDate(2021, 8, 31));
        rising->setDurationDays(184);
        rising->setIsLayering(true);
        rising->setLayerHeight(3000.5);
        add(database, rising);
        m_risingHandle = rising->GetHandle();

        auto* clearing = new KVXAnimation(2, shedId, KVXAnimation::Demolition, KVXAnimation::FrontToBack);
        clearing->setAnimStartPoint({0.1, 0.2, 0.3});
        clearing->setAnimEndPoint({1e-7, -3.5e9, 2.0 / 3.0});
        clearing->setLoopPlayback(true);
        clearing->setLoopEndDate(QDate(2022, 1, 31));
        add(database, clearing);

        auto* turning = new KVXAnimation(3, m_buildingId, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
        turning->setStartAngle(15.5);
        turning->setEndAngle(-90.25);
        turning->setLoopEndDate(QDate());
        add(database, turning);

        auto* route = new KVXAnimation(4, shedId, KVXAnimation::Path, KVXAnimation::LeftToRight);
        route->SetPoints({{0.0, 0.0, 0.0}, {1000.0, 500.0, 0.0}, {2000.0, 0.0, 100.0}});
        route->setPathRotateAngle(0.3);
        add(database, route);

        auto* craneRecord = new KVXTowerAnimation(5, m_craneId, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
        craneRecord->SetLiftingData({step(QDate(2021, 4, 1), 30000), step(QDate(2021, 5, 15), 42000),
                                     step(QDate(2021, 7, 1), 52000)});
        craneRecord->SetIsDismantle(true);
        craneRecord->SetDismantleDate(QDate(2021, 9, 20));
        add(database, craneRecord);
        m_towerHandle = craneRecord->GetHandle();

        add(database, new KVXTowerAnimation(6, m_craneId, KVXAnimation::Rotation, KVXAnimation::LeftToRight));

        auto* dates = KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(&database);
        ASSERT_NE(dates, nullptr);
        dates->CreateDateKeyFrame(0)->SetDate(QDate(2021, 3, 1));
        dates->CreateDateKeyFrame(8000)->SetDate(QDate(2021, 9, 20));

        auto* cameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(&database);
        ASSERT_NE(cameras, nullptr);
        cameras->CreateCameraKeyFrame(0)->SetCamera(makeCamera({-30000.0f, -30000.0f, 20000.0f},
                                                               {0.6f, 0.64f, -0.48f}).get());
        cameras->CreateCameraKeyFrame(8000)->SetCamera(makeCamera({10000.5f, -40000.25f, 8000.75f},
                                                                  {0.0f, 1.0f, 0.0f}).get());
    }

    // Saves the document, closes it and opens the file again.
    PfDbDocument* reopen(const QString& path)
    {
        QString error;
        EXPECT_TRUE(m_document->Save(path, &error)) << error.toStdString();
        PfDocManagerPtr()->CloseDocument(m_document);
        m_document = nullptr;
        PfDbLoadReport report;
        PfDbDocument* reopened = PfDocManagerPtr()->OpenDocument(path, &report, &error);
        EXPECT_NE(reopened, nullptr) << error.toStdString();
        EXPECT_TRUE(report.IsEmpty()) << report.Messages().join('\n').toStdString();
        return reopened;
    }

    QTemporaryDir m_directory;
    PfDbDocument* m_document = nullptr;
    qint64 m_buildingId = 0;
    qint64 m_craneId = 0;
    PfDbHandle m_risingHandle = kPfDbNullHandle;
    PfDbHandle m_towerHandle = kPfDbNullHandle;
};

TEST_F(ProjectDocument, everyObjectKeepsEveryPropertyThroughSaveAndReopen)
{
    const std::map<PfDbHandle, SavedObject> before = savedObjects(*m_document->GetDatabase());
    PfDbDocument* reopened = reopen(m_directory.filePath(QStringLiteral("site.kvx")));
    ASSERT_NE(reopened, nullptr);
    const std::map<PfDbHandle, SavedObject> after = savedObjects(*reopened->GetDatabase());

    ASSERT_EQ(after.size(), before.size());
    for (const auto& [handle, saved] : before) {
        SCOPED_TRACE(QString::fromStdWString(saved.className).toStdString() + " " + std::to_string(handle));
        auto it = after.find(handle);
        ASSERT_NE(it, after.end());
        EXPECT_EQ(it->second.className, saved.className);
        expectSameProperties(it->second.properties, saved.properties);
    }
}

TEST_F(ProjectDocument, reopenedRecordsStillPointAtTheirElements)
{
    PfDbDocument* reopened = reopen(m_directory.filePath(QStringLiteral("site.kvx")));
    ASSERT_NE(reopened, nullptr);
    EXPECT_EQ(PfDocManagerPtr()->CurrentDocument(), reopened);
    PfDbDatabase* database = reopened->GetDatabase();
    EXPECT_EQ(database->GetModelSpace()->Size(), 9u);

    auto* rising = KVXAnimation::Cast(database->OpenObject(m_risingHandle));
    ASSERT_NE(rising, nullptr);
    EXPECT_EQ(rising->getTranslationType(), KVXAnimation::TopDown);
    EXPECT_EQ(rising->getEndDate(), QDate(2021, 8, 31));
    EXPECT_EQ(rising->getLayerHeight(), 3000.5);
    EXPECT_NE(KVX3DElementObject::Cast(database->OpenObject(static_cast<PfDbHandle>(rising->getObjId()))), nullptr);

    auto* craneRecord = KVXTowerAnimation::Cast(database->OpenObject(m_towerHandle));
    ASSERT_NE(craneRecord, nullptr);
    EXPECT_EQ(craneRecord->getObjId(), m_craneId);
    EXPECT_NE(KVXTowerCraneObject::Cast(database->OpenObject(static_cast<PfDbHandle>(m_craneId))), nullptr);
    ASSERT_EQ(craneRecord->GetLiftingData().size(), 3);
    EXPECT_EQ(craneRecord->GetLiftingData()[1].date, QDate(2021, 5, 15));
    EXPECT_EQ(craneRecord->GetLiftingData()[2].height, 52000);
    EXPECT_EQ(craneRecord->GetDismantleDate(), QDate(2021, 9, 20));
}

TEST_F(ProjectDocument, reopenedTracksHoldTheirKeyFrames)
{
    PfDbDocument* reopened = reopen(m_directory.filePath(QStringLiteral("site.kvx")));
    ASSERT_NE(reopened, nullptr);
    PfDbDatabase* database = reopened->GetDatabase();

    auto* dates = KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(database);
    ASSERT_NE(dates, nullptr);
    KVXKeyFrame* before = nullptr;
    KVXKeyFrame* after = nullptr;
    auto* last = KVXDateKeyFrame::Cast(dates->GetKeyFrameAtTime(8000, before, after));
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last->GetDate(), QDate(2021, 9, 20));
    ASSERT_NE(KVXDateKeyFrame::Cast(before), nullptr);
    EXPECT_EQ(KVXDateKeyFrame::Cast(before)->GetDate(), QDate(2021, 3, 1));

    auto* cameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(database);
    ASSERT_NE(cameras, nullptr);
    auto* lastCamera = KVXCameraKeyFrame::Cast(cameras->GetKeyFrameAtTime(8000, before, after));
    ASSERT_NE(lastCamera, nullptr);
    ASSERT_NE(lastCamera->GetCamera(), nullptr);
    EXPECT_EQ(lastCamera->GetCamera()->GetPosition(), osg::Vec3f(10000.5f, -40000.25f, 8000.75f));
    EXPECT_EQ(lastCamera->GetCamera()->GetFieldOfView(), 52.3f);
    EXPECT_EQ(lastCamera->GetSceneImagePath(), m_directory.path().toStdWString() + L"//camera_key_frame_" +
                                                   std::to_wstring(lastCamera->GetHandle()) + L".png");
}

} // namespace
