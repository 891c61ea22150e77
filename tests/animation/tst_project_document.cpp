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
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>

namespace {

// What every live object writes of itself, by handle, one line per property.
std::map<PfDbHandle, QStringList> savedObjects(PfDbDatabase& database)
{
    std::map<PfDbHandle, QStringList> saved;
    for (PfDbObject* object : database.AllObjects()) {
        if (object->IsErased())
            continue;
        KVXSaveLoadXml xml;
        object->Save(xml);
        QStringList& lines = saved[object->GetHandle()];
        lines << QString::fromStdWString(object->IsA()->Name());
        for (const KVXSaveLoadXml::Property& p : xml.properties()) {
            QString line = p.key + ' ' + QString::number(static_cast<int>(p.type)) + ' ' + QString::number(p.integer);
            for (double n : p.number)
                line += ' ' + QString::number(n, 'g', 17);
            for (PfDbHandle handle : p.handles)
                line += ' ' + QString::number(handle);
            lines << line + ' ' + p.text;
        }
    }
    return saved;
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
        add(database, building);
        auto* crane = new KVXTowerCraneObject();
        crane->SetPosition({-5000.5, 8000.25, 0.0});
        add(database, crane);
        const auto buildingId = static_cast<qint64>(building->GetHandle());
        const auto craneId = static_cast<qint64>(crane->GetHandle());

        auto* rising = new KVXAnimation(1, buildingId, KVXAnimation::Construction, KVXAnimation::TopDown);
        rising->setEndDate(QDate(2021, 8, 31));
        rising->setIsLayering(true);
        rising->setLayerHeight(3000.5);
        add(database, rising);
        m_recordHandle = rising->GetHandle();

        auto* clearing = new KVXAnimation(2, buildingId, KVXAnimation::Demolition, KVXAnimation::FrontToBack);
        clearing->setAnimEndPoint({1e-7, -3.5e9, 2.0 / 3.0});
        clearing->setEndAngle(-90.25);
        clearing->setLoopEndDate(QDate());
        add(database, clearing);

        auto* route = new KVXAnimation(3, buildingId, KVXAnimation::Path, KVXAnimation::LeftToRight);
        route->SetPoints({{0.0, 0.0, 0.0}, {1000.0, 500.0, 0.0}, {2000.0, 0.0, 100.0}});
        route->setPathRotateAngle(0.3);
        add(database, route);

        auto* craneRecord = new KVXTowerAnimation(4, craneId, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
        craneRecord->SetLiftingData({{QDate(2021, 4, 1), 30000}, {QDate(2021, 7, 1), 52000}});
        craneRecord->SetIsDismantle(true);
        craneRecord->SetDismantleDate(QDate(2021, 9, 20));
        add(database, craneRecord);
        add(database, new KVXTowerAnimation(5, craneId, KVXAnimation::Rotation, KVXAnimation::LeftToRight));

        m_dates = KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(&database);
        ASSERT_NE(m_dates, nullptr);
        m_dates->CreateDateKeyFrame(0)->SetDate(QDate(2021, 3, 1));
        m_dates->CreateDateKeyFrame(8000)->SetDate(QDate(2021, 9, 20));
        m_cameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(&database);
        ASSERT_NE(m_cameras, nullptr);
        m_cameras->CreateCameraKeyFrame(0)->SetCamera(
            makeCamera({-30000.0f, -30000.0f, 20000.0f}, {0.6f, 0.64f, -0.48f}).get());
        m_cameras->CreateCameraKeyFrame(8000)->SetCamera(
            makeCamera({10000.5f, -40000.25f, 8000.75f}, {0.0f, 1.0f, 0.0f}).get());
    }

    // Saves the document, closes it and opens the file again.
    PfDbDatabase* reopen()
    {
        const QString path = m_directory.filePath(QStringLiteral("site.kvx"));
        QString error;
        EXPECT_TRUE(m_document->Save(path, &error)) << error.toStdString();
        PfDocManagerPtr()->CloseDocument(m_document);
        PfDbLoadReport report;
        m_document = PfDocManagerPtr()->OpenDocument(path, &report, &error);
        EXPECT_NE(m_document, nullptr) << error.toStdString();
        EXPECT_TRUE(report.IsEmpty()) << report.Messages().join('\n').toStdString();
        EXPECT_EQ(PfDocManagerPtr()->CurrentDocument(), m_document);
        return m_document ? m_document->GetDatabase() : nullptr;
    }

    QTemporaryDir m_directory;
    PfDbDocument* m_document = nullptr;
    PfDbHandle m_recordHandle = kPfDbNullHandle;
    KVXDateKeyFramesTrack* m_dates = nullptr;
    KVXCameraKeyFramesTrack* m_cameras = nullptr;
};

TEST_F(ProjectDocument, everyObjectKeepsEveryPropertyThroughSaveAndReopen)
{
    const std::map<PfDbHandle, QStringList> before = savedObjects(*m_document->GetDatabase());
    PfDbDatabase* database = reopen();
    ASSERT_NE(database, nullptr);
    const std::map<PfDbHandle, QStringList> after = savedObjects(*database);

    ASSERT_EQ(after.size(), before.size());
    for (const auto& [handle, saved] : before) {
        auto it = after.find(handle);
        ASSERT_NE(it, after.end()) << saved.front().toStdString() << ' ' << handle;
        EXPECT_EQ(it->second, saved);
    }
}

TEST_F(ProjectDocument, reopenedRecordsAndTracksAreFoundAgain)
{
    const PfDbHandle dateTrack = m_dates->GetHandle();
    const PfDbHandle cameraTrack = m_cameras->GetHandle();
    PfDbDatabase* database = reopen();
    ASSERT_NE(database, nullptr);

    auto* rising = KVXAnimation::Cast(database->OpenObject(m_recordHandle));
    ASSERT_NE(rising, nullptr);
    EXPECT_NE(KVX3DElementObject::Cast(database->OpenObject(static_cast<PfDbHandle>(rising->getObjId()))), nullptr);

    auto* dates = KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(database);
    ASSERT_NE(dates, nullptr);
    EXPECT_EQ(dates->GetHandle(), dateTrack);
    auto* cameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(database);
    ASSERT_NE(cameras, nullptr);
    EXPECT_EQ(cameras->GetHandle(), cameraTrack);
    EXPECT_EQ(database->ObjManagers().size(), 2u);
    KVXKeyFrame* before = nullptr;
    KVXKeyFrame* after = nullptr;
    EXPECT_NE(KVXDateKeyFrame::Cast(dates->GetKeyFrameAtTime(8000, before, after)), nullptr);
    EXPECT_NE(KVXDateKeyFrame::Cast(before), nullptr);
    EXPECT_NE(KVXCameraKeyFrame::Cast(cameras->GetKeyFrameAtTime(0, before, after)), nullptr);
}

} // namespace

namespace {

TEST(RecordValues, kindsTheModuleDoesNotHaveAreReadAsTheFirstWithANote)
{
    // An animation kind of 8 or a direction of 9 used to be cast as they
    // were, which left playback undefined.
    KVXSaveLoadXml xml;
    xml.setInt(QStringLiteral("AnimationType"), 8);
    xml.setInt(QStringLiteral("TranslationType"), 9);
    KVXAnimation record;
    record.getElementPropertys(xml);
    EXPECT_EQ(record.getAnimationType(), KVXAnimation::Construction);
    EXPECT_EQ(record.getTranslationType(), KVXAnimation::LeftToRight);
    EXPECT_EQ(xml.problems(), QStringList({"AnimationType 8 is not between 0 and 4: read as 0",
                                           "TranslationType 9 is not between 0 and 5: read as 0"}));
}

} // namespace
