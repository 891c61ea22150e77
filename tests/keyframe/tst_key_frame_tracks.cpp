#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbLoadReport.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "keyframe/KVXCameraKeyFramesTrack.h"
#include "keyframe/KVXDateKeyFramesTrack.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace {

const wchar_t* const kDateTrackName = L"DATE_ANIMATION_KEY_FRAME_CONTAINER";
const wchar_t* const kCameraTrackName = L"CAMERA_ANIMATION_KEY_FRAME_CONTAINER";

// Each test works in a new current document of its own.
class TrackTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_document = PfDocManagerPtr()->NewDocument();
        m_database = m_document->GetDatabase();
        m_dates = KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(m_database);
        ASSERT_NE(m_dates, nullptr);
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }

    KVXKeyFrame* dateKeyFrameAt(int ms)
    {
        KVXKeyFrame* keyFrame = m_dates->CreateDateKeyFrame(ms);
        EXPECT_NE(keyFrame, nullptr) << ms;
        return keyFrame;
    }

    PfDbDocument* m_document = nullptr;
    PfDbDatabase* m_database = nullptr;
    KVXDateKeyFramesTrack* m_dates = nullptr;
};

std::vector<int> timesOf(const std::vector<KVXKeyFrame*>& keyFrames)
{
    std::vector<int> times;
    for (const KVXKeyFrame* keyFrame : keyFrames)
        times.push_back(keyFrame->GetTime());
    return times;
}

constexpr int kNone = -2;

struct LookupRow {
    const char* name;
    std::vector<int> times; // in the order they are added
    unsigned int query;
    int exact;
    int before;
    int after;
};

void PrintTo(const LookupRow& row, std::ostream* os) { *os << row.name; }

class TrackLookup : public TrackTest, public ::testing::WithParamInterface<LookupRow> {};

TEST_P(TrackLookup, findsTheKeyFrameAtATimeAndItsNeighbours)
{
    const LookupRow& row = GetParam();
    std::map<int, KVXKeyFrame*> byTime{{kNone, nullptr}};
    for (int ms : row.times)
        byTime[ms] = dateKeyFrameAt(ms);

    // Both are answered in every case, whatever they held.
    KVXKeyFrame stale;
    KVXKeyFrame* before = &stale;
    KVXKeyFrame* after = &stale;
    KVXKeyFrame* exact = m_dates->GetKeyFrameAtTime(row.query, before, after);
    EXPECT_EQ(exact, byTime.at(row.exact));
    EXPECT_EQ(before, byTime.at(row.before));
    EXPECT_EQ(after, byTime.at(row.after));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TrackLookup,
    ::testing::Values(LookupRow{"exactInTheMiddle", {0, 2000, 4000}, 2000, 2000, 0, 4000},
                      LookupRow{"betweenTwo", {0, 2000, 4000}, 3000, kNone, 2000, 4000},
                      LookupRow{"afterTheLast", {0, 2000, 4000}, 5000, kNone, 4000, kNone},
                      LookupRow{"exactFirst", {0, 2000, 4000}, 0, 0, kNone, 2000},
                      LookupRow{"exactLast", {0, 2000, 4000}, 4000, 4000, 2000, kNone},
                      LookupRow{"oneMillisecondShort", {0, 2000, 4000}, 1999, kNone, 0, 2000},
                      LookupRow{"addedOutOfOrder", {4000, 0, 2000}, 1000, kNone, 0, 2000},
                      LookupRow{"beforeASingleKeyFrame", {1000}, 500, kNone, kNone, 1000},
                      LookupRow{"afterASingleKeyFrame", {1000}, 1500, kNone, 1000, kNone},
                      LookupRow{"emptyTrack", {}, 0, kNone, kNone, kNone},
                      // Times compare unsigned: a negative time lies after every other.
                      LookupRow{"negativeTimeComparesAsLate", {0, -1}, 100, kNone, kNone, -1}),
    [](const ::testing::TestParamInfo<LookupRow>& info) { return std::string(info.param.name); });

TEST_F(TrackTest, hasKeyFrameAtTimeOnlyForExactTimes)
{
    KVXKeyFrame* keyFrame = dateKeyFrameAt(2000);
    for (int ms : {0, 1999, 2001, -2000}) {
        SCOPED_TRACE(ms);
        EXPECT_FALSE(m_dates->HasKeyFrameAtTime(ms));
    }
    EXPECT_TRUE(m_dates->HasKeyFrameAtTime(2000));

    m_dates->RemoveKeyFrame(static_cast<qint64>(keyFrame->GetHandle()));
    EXPECT_FALSE(m_dates->HasKeyFrameAtTime(2000));
}

TEST_F(TrackTest, sortingInsertsAmongWhatTheVectorHolds)
{
    auto* cameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(m_database);
    ASSERT_NE(cameras, nullptr);
    KVXKeyFrame* held1000 = cameras->CreateCameraKeyFrame(1000);
    KVXKeyFrame* held3000 = cameras->CreateCameraKeyFrame(3000);
    KVXKeyFrame* at4000 = dateKeyFrameAt(4000);
    KVXKeyFrame* at0 = dateKeyFrameAt(0);
    KVXKeyFrame* at3000 = dateKeyFrameAt(3000);
    KVXKeyFrame* at2000 = dateKeyFrameAt(2000);

    std::vector<KVXKeyFrame*> sorted{held1000, held3000};
    m_dates->GetSortedKeyFramesByTime(sorted);
    // A new key frame goes before the equal times already there.
    EXPECT_EQ(sorted, (std::vector<KVXKeyFrame*>{at0, held1000, at2000, at3000, held3000, at4000}));
}

TEST_F(TrackTest, equalTimesSortInReverseOrderOfAddition)
{
    KVXKeyFrame* first = dateKeyFrameAt(1000);
    KVXKeyFrame* second = dateKeyFrameAt(1000);
    KVXKeyFrame* early = dateKeyFrameAt(500);
    KVXKeyFrame* third = dateKeyFrameAt(1000);

    std::vector<KVXKeyFrame*> sorted;
    m_dates->GetSortedKeyFramesByTime(sorted);
    EXPECT_EQ(sorted, (std::vector<KVXKeyFrame*>{early, third, second, first}));
}

TEST_F(TrackTest, containerIsMadeOnceAndRegisteredUnderItsName)
{
    EXPECT_EQ(KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(m_database), m_dates);
    auto* cameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(m_database);
    ASSERT_NE(cameras, nullptr);
    EXPECT_EQ(KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(m_database), cameras);
    EXPECT_NE(static_cast<PfDbObject*>(cameras), static_cast<PfDbObject*>(m_dates));

    EXPECT_EQ(m_database->GetObjManager(kDateTrackName), m_dates);
    EXPECT_EQ(m_database->GetObjManager(kCameraTrackName), cameras);
    EXPECT_EQ(m_database->ObjManagers().size(), 2u);
}

TEST(TrackContainer, foreignObjectUnderTheNameIsNeverReplaced)
{
    using Make = PfDbObjContainer* (*)();
    using Lookup = PfDbObject* (*)(PfDbDatabase*);
    const Lookup cameraTrack = [](PfDbDatabase* d) -> PfDbObject* {
        return KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(d);
    };
    const Lookup dateTrack = [](PfDbDatabase* d) -> PfDbObject* {
        return KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(d);
    };
    struct Row {
        const char* name;
        const wchar_t* managerName;
        Make make;
        Lookup lookup;
    };
    const Row rows[] = {
        {"plainContainerUnderCameraName", kCameraTrackName, [] { return new PfDbObjContainer(); }, cameraTrack},
        {"dateTrackUnderCameraName", kCameraTrackName,
         []() -> PfDbObjContainer* { return new KVXDateKeyFramesTrack(); }, cameraTrack},
        {"cameraTrackUnderDateName", kDateTrackName,
         []() -> PfDbObjContainer* { return new KVXCameraKeyFramesTrack(); }, dateTrack},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        PfDbDatabase database;
        PfDbObjContainer* foreign = row.make();
        ASSERT_EQ(database.AddObjManager(row.managerName, foreign), Pfad::eOk);
        EXPECT_EQ(row.lookup(&database), nullptr);
        EXPECT_EQ(database.GetObjManager(row.managerName), foreign);
        EXPECT_EQ(database.ObjManagers().size(), 1u);
    }
}

TEST_F(TrackTest, tracksAreFoundAgainAfterSaveAndReopen)
{
    QTemporaryDir directory;
    ASSERT_TRUE(directory.isValid());
    auto* cameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(m_database);
    ASSERT_NE(cameras, nullptr);
    KVXDateKeyFrame* date = m_dates->CreateDateKeyFrame(2000);
    date->SetDate(QDate(2021, 2, 28));
    dateKeyFrameAt(0);
    KVXCameraKeyFrame* camera = cameras->CreateCameraKeyFrame(1500);
    ASSERT_NE(camera, nullptr);
    const PfDbHandle dateTrackHandle = m_dates->GetHandle();
    const PfDbHandle dateHandle = date->GetHandle();
    const PfDbHandle cameraHandle = camera->GetHandle();

    const QString path = directory.filePath(QStringLiteral("tracks.kvx"));
    QString error;
    ASSERT_TRUE(m_document->Save(path, &error)) << error.toStdString();
    PfDocManagerPtr()->CloseAll();

    PfDbLoadReport report;
    PfDbDocument* reopened = PfDocManagerPtr()->OpenDocument(path, &report, &error);
    ASSERT_NE(reopened, nullptr) << error.toStdString();
    EXPECT_TRUE(report.IsEmpty()) << report.Messages().join('\n').toStdString();
    PfDbDatabase* database = reopened->GetDatabase();

    KVXDateKeyFramesTrack* dates = KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(database);
    ASSERT_NE(dates, nullptr);
    EXPECT_EQ(dates->GetHandle(), dateTrackHandle);
    EXPECT_EQ(database->ObjManagers().size(), 2u);
    EXPECT_EQ(dates->Size(), 2u);
    KVXKeyFrame* before = nullptr;
    KVXKeyFrame* after = nullptr;
    auto* found = KVXDateKeyFrame::Cast(dates->GetKeyFrameAtTime(2000, before, after));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->GetHandle(), dateHandle);
    EXPECT_EQ(found->GetDate(), QDate(2021, 2, 28));
    ASSERT_NE(before, nullptr);
    EXPECT_EQ(before->GetTime(), 0);

    KVXCameraKeyFramesTrack* reopenedCameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(database);
    ASSERT_NE(reopenedCameras, nullptr);
    std::vector<KVXKeyFrame*> sorted;
    reopenedCameras->GetSortedKeyFramesByTime(sorted);
    ASSERT_EQ(sorted.size(), 1u);
    EXPECT_EQ(sorted[0]->GetHandle(), cameraHandle);
    EXPECT_EQ(sorted[0]->GetTime(), 1500);
    EXPECT_NE(KVXCameraKeyFrame::Cast(sorted[0]), nullptr);
}

TEST_F(TrackTest, createMakesAKeyFrameOfTheTracksKindInTheDatabase)
{
    KVXDateKeyFrame* date = m_dates->CreateDateKeyFrame(750);
    ASSERT_NE(date, nullptr);
    EXPECT_EQ(date->IsA(), KVXDateKeyFrame::Desc());
    EXPECT_EQ(date->GetTime(), 750);
    EXPECT_FALSE(date->GetDate().isValid());
    EXPECT_EQ(m_database->OpenObject(date->GetHandle()), date);

    auto* cameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(m_database);
    KVXCameraKeyFrame* camera = cameras->CreateCameraKeyFrame(750);
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->IsA(), KVXCameraKeyFrame::Desc());
    EXPECT_EQ(camera->GetCamera(), nullptr);
    EXPECT_TRUE(camera->GetSceneImagePath().empty());

    // The caller checks for a key frame at that time; the track does not.
    EXPECT_NE(m_dates->CreateDateKeyFrame(750), nullptr);
    EXPECT_EQ(m_dates->Size(), 2u);
    EXPECT_EQ(cameras->Size(), 1u);
}

TEST_F(TrackTest, baseTrackMakesNothing)
{
    auto* track = new KVXKeyFramesTrack();
    ASSERT_EQ(m_database->AddObjManager(L"PLAIN_KEY_FRAME_TRACK", track), Pfad::eOk);
    EXPECT_EQ(track->CreateKeyFrame(100), nullptr);
    EXPECT_EQ(track->Size(), 0u);
}

TEST_F(TrackTest, withoutCurrentDocumentNothingIsCreatedOrRemoved)
{
    KVXKeyFrame* kept = dateKeyFrameAt(100);
    PfDocManagerPtr()->SetCurrentDocument(nullptr);

    EXPECT_EQ(m_dates->CreateDateKeyFrame(200), nullptr);
    EXPECT_EQ(m_dates->CreateKeyFrame(200), nullptr);
    m_dates->RemoveKeyFrame(static_cast<qint64>(kept->GetHandle()));
    EXPECT_EQ(m_dates->Size(), 1u);
    EXPECT_TRUE(m_dates->HasKeyFrameAtTime(100));
}

TEST_F(TrackTest, removeIgnoresWhatIsNotOneOfItsKeyFrames)
{
    KVXKeyFrame* own = dateKeyFrameAt(100);
    auto* element = new KVX3DElementObject();
    ASSERT_EQ(m_database->GetModelSpace()->Add(element), Pfad::eOk);
    auto* cameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(m_database);
    KVXKeyFrame* other = cameras->CreateCameraKeyFrame(100);

    // An unknown id, an element, another track's key frame and the track itself.
    const PfDbHandle ids[] = {987654, element->GetHandle(), other->GetHandle(), m_dates->GetHandle()};
    for (PfDbHandle id : ids) {
        SCOPED_TRACE(id);
        m_dates->RemoveKeyFrame(static_cast<qint64>(id));
    }
    EXPECT_EQ(m_dates->Size(), 1u);
    EXPECT_EQ(m_database->OpenObject(own->GetHandle()), own);
    EXPECT_EQ(m_database->OpenObject(element->GetHandle()), element);
    EXPECT_TRUE(m_database->GetModelSpace()->Contains(element->GetHandle()));
    EXPECT_EQ(m_database->OpenObject(other->GetHandle()), other);
    EXPECT_TRUE(cameras->HasKeyFrameAtTime(100));
    EXPECT_EQ(m_database->OpenObject(m_dates->GetHandle()), m_dates);
}

TEST_F(TrackTest, removalIsUndoneAndRedone)
{
    dateKeyFrameAt(0);
    KVXKeyFrame* removed = dateKeyFrameAt(2000);
    dateKeyFrameAt(4000);
    const PfDbHandle handle = removed->GetHandle();
    PfDbTransactionManager* transactions = m_database->TransactionManager();

    transactions->StartTransaction();
    m_dates->RemoveKeyFrame(static_cast<qint64>(handle));
    ASSERT_EQ(transactions->EndTransaction(), Pfad::eOk);
    EXPECT_FALSE(m_dates->HasKeyFrameAtTime(2000));
    EXPECT_EQ(m_database->OpenObject(handle), nullptr);

    ASSERT_TRUE(transactions->Undo());
    EXPECT_TRUE(m_dates->HasKeyFrameAtTime(2000));
    EXPECT_EQ(m_dates->Size(), 3u);
    KVXKeyFrame* before = nullptr;
    KVXKeyFrame* after = nullptr;
    KVXKeyFrame* back = m_dates->GetKeyFrameAtTime(2000, before, after);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->GetHandle(), handle);
    ASSERT_NE(before, nullptr);
    ASSERT_NE(after, nullptr);
    EXPECT_EQ(before->GetTime(), 0);
    EXPECT_EQ(after->GetTime(), 4000);

    ASSERT_TRUE(transactions->Redo());
    EXPECT_FALSE(m_dates->HasKeyFrameAtTime(2000));
    EXPECT_EQ(m_dates->Size(), 2u);
}

TEST_F(TrackTest, creationIsUndoneAndRedone)
{
    PfDbTransactionManager* transactions = m_database->TransactionManager();
    transactions->StartTransaction();
    KVXDateKeyFrame* created = m_dates->CreateDateKeyFrame(1200);
    ASSERT_NE(created, nullptr);
    created->SetDate(QDate(2022, 8, 8));
    ASSERT_EQ(transactions->EndTransaction(), Pfad::eOk);

    ASSERT_TRUE(transactions->Undo());
    EXPECT_EQ(m_dates->Size(), 0u);
    EXPECT_FALSE(m_dates->HasKeyFrameAtTime(1200));

    ASSERT_TRUE(transactions->Redo());
    ASSERT_EQ(m_dates->Size(), 1u);
    std::vector<KVXKeyFrame*> sorted;
    m_dates->GetSortedKeyFramesByTime(sorted);
    EXPECT_EQ(timesOf(sorted), std::vector<int>{1200});
    auto* redone = KVXDateKeyFrame::Cast(sorted[0]);
    ASSERT_NE(redone, nullptr);
    EXPECT_EQ(redone->GetDate(), QDate(2022, 8, 8));
}

} // namespace
