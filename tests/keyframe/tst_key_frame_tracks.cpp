#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "keyframe/KVXCameraKeyFramesTrack.h"
#include "keyframe/KVXDateKeyFramesTrack.h"

#include "tests/support/ModuleEnvironment.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

const wchar_t* const kDateTrackName = L"DATE_ANIMATION_KEY_FRAME_CONTAINER";
const wchar_t* const kCameraTrackName = L"CAMERA_ANIMATION_KEY_FRAME_CONTAINER";

// Each test works in a new current document of its own.
class Track : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_database = PfDocManagerPtr()->NewDocument()->GetDatabase();
        m_dates = KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(m_database);
        ASSERT_NE(m_dates, nullptr);
        m_cameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(m_database);
        ASSERT_NE(m_cameras, nullptr);
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }

    KVXKeyFrame* dateKeyFrameAt(int ms, KVXDateKeyFramesTrack* track = nullptr)
    {
        KVXKeyFrame* keyFrame = (track ? track : m_dates)->CreateDateKeyFrame(ms);
        EXPECT_NE(keyFrame, nullptr) << ms;
        return keyFrame;
    }

    PfDbDatabase* m_database = nullptr;
    KVXDateKeyFramesTrack* m_dates = nullptr;
    KVXCameraKeyFramesTrack* m_cameras = nullptr;
};

constexpr int kNone = -2;

TEST_F(Track, findsTheKeyFrameAtATimeAndItsNeighbours)
{
    const struct {
        const char* name;
        std::vector<int> times; // in the order they are added
        unsigned int query;
        int exact, before, after;
    } rows[] = {
        {"exactInTheMiddle", {0, 2000, 4000}, 2000, 2000, 0, 4000},
        {"exactFirst", {0, 2000, 4000}, 0, 0, kNone, 2000},
        {"exactLast", {0, 2000, 4000}, 4000, 4000, 2000, kNone},
        {"betweenTwoAddedOutOfOrder", {4000, 0, 2000}, 3000, kNone, 2000, 4000},
        {"beforeTheFirst", {1000, 2000}, 500, kNone, kNone, 1000},
        {"afterTheLast", {0, 2000, 4000}, 5000, kNone, 4000, kNone},
        {"emptyTrack", {}, 0, kNone, kNone, kNone},
        // Times sort signed but compare unsigned: a negative time ends the search at once.
        {"negativeTime", {0, -1}, 100, kNone, kNone, -1},
    };
    int trackNumber = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        auto* track = new KVXDateKeyFramesTrack();
        ASSERT_EQ(m_database->AddObjManager(L"LOOKUP_" + std::to_wstring(++trackNumber), track), Pfad::eOk);
        std::map<int, KVXKeyFrame*> byTime{{kNone, nullptr}};
        for (int ms : row.times)
            byTime[ms] = dateKeyFrameAt(ms, track);

        // Both are answered in every case, whatever they held.
        KVXKeyFrame stale;
        KVXKeyFrame* before = &stale;
        KVXKeyFrame* after = &stale;
        EXPECT_EQ(track->GetKeyFrameAtTime(row.query, before, after), byTime.at(row.exact));
        EXPECT_EQ(before, byTime.at(row.before));
        EXPECT_EQ(after, byTime.at(row.after));
    }
}

TEST_F(Track, hasKeyFrameAtTimeOnlyForExactTimes)
{
    KVXKeyFrame* keyFrame = dateKeyFrameAt(2000);
    for (int ms : {0, 1999, 2001, -2000})
        EXPECT_FALSE(m_dates->HasKeyFrameAtTime(ms)) << ms;
    EXPECT_TRUE(m_dates->HasKeyFrameAtTime(2000));
    m_dates->RemoveKeyFrame(static_cast<qint64>(keyFrame->GetHandle()));
    EXPECT_FALSE(m_dates->HasKeyFrameAtTime(2000));
}

TEST_F(Track, sortingInsertsEachKeyFrameBeforeTheEqualTimesAlreadyThere)
{
    KVXKeyFrame* held1000 = m_cameras->CreateCameraKeyFrame(1000);
    KVXKeyFrame* held3000 = m_cameras->CreateCameraKeyFrame(3000);
    KVXKeyFrame* at4000 = dateKeyFrameAt(4000);
    KVXKeyFrame* at0 = dateKeyFrameAt(0);
    KVXKeyFrame* at3000 = dateKeyFrameAt(3000);
    KVXKeyFrame* first1000 = dateKeyFrameAt(1000);
    KVXKeyFrame* second1000 = dateKeyFrameAt(1000);

    // So equal times of the track itself come out in reverse order of addition.
    std::vector<KVXKeyFrame*> sorted{held1000, held3000};
    m_dates->GetSortedKeyFramesByTime(sorted);
    EXPECT_EQ(sorted,
              (std::vector<KVXKeyFrame*>{at0, second1000, first1000, held1000, at3000, held3000, at4000}));
}

TEST_F(Track, eachTrackIsMadeOnceUnderItsNameAndAForeignObjectThereIsNeverReplaced)
{
    EXPECT_EQ(KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(m_database), m_dates);
    EXPECT_EQ(KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(m_database), m_cameras);
    EXPECT_EQ(m_database->GetObjManager(kDateTrackName), m_dates);
    EXPECT_EQ(m_database->GetObjManager(kCameraTrackName), m_cameras);
    EXPECT_EQ(m_database->ObjManagers().size(), 2u);

    PfDbDatabase plain;
    auto* container = new PfDbObjContainer();
    ASSERT_EQ(plain.AddObjManager(kCameraTrackName, container), Pfad::eOk);
    EXPECT_EQ(KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(&plain), nullptr);
    EXPECT_EQ(plain.GetObjManager(kCameraTrackName), container);

    PfDbDatabase swapped;
    auto* cameraTrack = new KVXCameraKeyFramesTrack();
    ASSERT_EQ(swapped.AddObjManager(kDateTrackName, cameraTrack), Pfad::eOk);
    EXPECT_EQ(KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(&swapped), nullptr);
    EXPECT_EQ(swapped.GetObjManager(kDateTrackName), cameraTrack);
    EXPECT_EQ(swapped.ObjManagers().size(), 1u);
}

TEST_F(Track, createsKeyFramesOfItsKindOnlyInACurrentDocument)
{
    KVXDateKeyFrame* date = m_dates->CreateDateKeyFrame(750);
    ASSERT_NE(date, nullptr);
    EXPECT_EQ(date->IsA(), KVXDateKeyFrame::Desc());
    EXPECT_EQ(date->GetTime(), 750);
    EXPECT_EQ(m_database->OpenObject(date->GetHandle()), date);
    KVXCameraKeyFrame* camera = m_cameras->CreateCameraKeyFrame(750);
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->IsA(), KVXCameraKeyFrame::Desc());
    EXPECT_EQ(camera->GetCamera(), nullptr);
    // The caller checks for a key frame at that time; the track does not.
    EXPECT_NE(m_dates->CreateDateKeyFrame(750), nullptr);
    EXPECT_EQ(m_dates->Size(), 2u);

    auto* track = new KVXKeyFramesTrack();
    ASSERT_EQ(m_database->AddObjManager(L"PLAIN_KEY_FRAME_TRACK", track), Pfad::eOk);
    EXPECT_EQ(track->CreateKeyFrame(100), nullptr);
    EXPECT_EQ(track->Size(), 0u);

    PfDocManagerPtr()->SetCurrentDocument(nullptr);
    EXPECT_EQ(m_dates->CreateDateKeyFrame(200), nullptr);
    m_dates->RemoveKeyFrame(static_cast<qint64>(date->GetHandle()));
    EXPECT_EQ(m_dates->Size(), 2u);
}

TEST_F(Track, removeIgnoresWhatIsNotOneOfItsKeyFrames)
{
    KVXKeyFrame* own = dateKeyFrameAt(100);
    auto* element = new KVX3DElementObject();
    ASSERT_EQ(m_database->GetModelSpace()->Add(element), Pfad::eOk);
    KVXKeyFrame* other = m_cameras->CreateCameraKeyFrame(100);

    // An unknown id, an element, another track's key frame and the track itself.
    for (PfDbHandle id : {PfDbHandle(987654), element->GetHandle(), other->GetHandle(), m_dates->GetHandle()})
        m_dates->RemoveKeyFrame(static_cast<qint64>(id));
    EXPECT_EQ(m_dates->Size(), 1u);
    EXPECT_EQ(m_database->OpenObject(own->GetHandle()), own);
    EXPECT_TRUE(m_database->GetModelSpace()->Contains(element->GetHandle()));
    EXPECT_TRUE(m_cameras->HasKeyFrameAtTime(100));
    EXPECT_EQ(m_database->OpenObject(m_dates->GetHandle()), m_dates);
}

TEST_F(Track, removalIsUndoneAndRedone)
{
    dateKeyFrameAt(0);
    const PfDbHandle handle = dateKeyFrameAt(2000)->GetHandle();
    dateKeyFrameAt(4000);
    PfDbTransactionManager* transactions = m_database->TransactionManager();
    transactions->StartTransaction();
    m_dates->RemoveKeyFrame(static_cast<qint64>(handle));
    ASSERT_EQ(transactions->EndTransaction(), Pfad::eOk);
    EXPECT_FALSE(m_dates->HasKeyFrameAtTime(2000));
    EXPECT_EQ(m_database->OpenObject(handle), nullptr);

    ASSERT_TRUE(transactions->Undo());
    KVXKeyFrame* before = nullptr;
    KVXKeyFrame* after = nullptr;
    KVXKeyFrame* back = m_dates->GetKeyFrameAtTime(2000, before, after);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->GetHandle(), handle);
    EXPECT_EQ(m_dates->Size(), 3u);

    ASSERT_TRUE(transactions->Redo());
    EXPECT_FALSE(m_dates->HasKeyFrameAtTime(2000));
    EXPECT_EQ(m_dates->Size(), 2u);
}

} // namespace
