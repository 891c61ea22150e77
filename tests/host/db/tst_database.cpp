#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDatabaseReactor.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/KVXTowerCraneObject.h"

#include <gtest/gtest.h>

#include <set>

namespace {

struct ErasureLog : PfDbDatabaseReactor {
    std::vector<std::pair<PfDbHandle, bool>> erasures;
    std::vector<PfDbHandle> appended;
    int goodbyes = 0;
    void objectErased(const PfDbDatabase*, const PfDbObject* object, bool erasing) override
    {
        erasures.emplace_back(object->GetHandle(), erasing);
    }
    void objectAppended(const PfDbDatabase*, const PfDbObject* object) override
    {
        appended.push_back(object->GetHandle());
    }
    void goodbye(const PfDbDatabase*) override { ++goodbyes; }
};

TEST(Database, handlesAreUniqueAndNeverReused)
{
    PfDbDatabase database;
    std::set<PfDbHandle> seen{database.GetModelSpace()->GetHandle()};
    for (int i = 0; i < 50; ++i) {
        auto* element = new KVX3DElementObject();
        const PfDbHandle handle = database.AddObject(element);
        EXPECT_NE(handle, kPfDbNullHandle);
        EXPECT_TRUE(seen.insert(handle).second);
        if (i % 2)
            element->Erase();
    }
    const PfDbHandle next = database.AddObject(new KVX3DElementObject());
    EXPECT_GT(next, *seen.rbegin());
}

TEST(Database, addingTwiceOrNullIsRefused)
{
    PfDbDatabase first, second;
    auto* element = new KVX3DElementObject();
    first.AddObject(element);
    EXPECT_EQ(first.AddObject(element), kPfDbNullHandle);
    EXPECT_EQ(second.AddObject(element), kPfDbNullHandle);
    EXPECT_EQ(first.AddObject(nullptr), kPfDbNullHandle);
}

TEST(Database, openAnswersNullForUnknownAndErasedIds)
{
    PfDbDatabase database;
    auto* element = new KVX3DElementObject();
    const PfDbHandle handle = database.AddObject(element);
    EXPECT_EQ(database.OpenObject(handle), element);
    EXPECT_EQ(database.OpenObject(handle + 100), nullptr);
    EXPECT_EQ(database.OpenObject(kPfDbNullHandle), nullptr);
    element->Erase();
    EXPECT_EQ(database.OpenObject(handle), nullptr);
    EXPECT_EQ(database.OpenObject(handle, true), element);
    element->Erase(false);
    EXPECT_EQ(database.OpenObject(handle), element);
}

TEST(Database, reactorsHearEachEraseOnce)
{
    PfDbDatabase database;
    ErasureLog log;
    database.AddReactor(&log);
    database.AddReactor(&log);
    auto* element = new KVX3DElementObject();
    const PfDbHandle handle = database.AddObject(element);
    element->Erase();
    element->Erase();
    element->Erase(false);
    element->Erase(false);
    EXPECT_EQ(log.appended, std::vector<PfDbHandle>{handle});
    const std::vector<std::pair<PfDbHandle, bool>> expected{{handle, true}, {handle, false}};
    EXPECT_EQ(log.erasures, expected);
    database.RemoveReactor(&log);
    element->Erase();
    EXPECT_EQ(log.erasures.size(), 2u);
}

TEST(Database, reactorsHearGoodbye)
{
    ErasureLog log;
    {
        PfDbDatabase database;
        database.AddReactor(&log);
    }
    EXPECT_EQ(log.goodbyes, 1);
}

TEST(Containers, iterateLiveItemsInInsertionOrder)
{
    PfDbDatabase database;
    PfDbObjContainer* space = database.GetModelSpace();
    std::vector<PfDbObject*> added;
    for (int i = 0; i < 4; ++i) {
        added.push_back(new KVXTowerCraneObject());
        ASSERT_EQ(space->Add(added.back()), Pfad::eOk);
    }
    added[1]->Erase();
    std::vector<PfDbObject*> seen(space->begin(), space->end());
    EXPECT_EQ(seen, (std::vector<PfDbObject*>{added[0], added[2], added[3]}));
    EXPECT_EQ(space->Size(), 3u);
    added[1]->Erase(false);
    EXPECT_EQ(space->Size(), 4u);
    EXPECT_EQ(*space->begin(), added[0]);
}

TEST(Containers, removeUnlistsAndErases)
{
    PfDbDatabase database;
    PfDbObjContainer* space = database.GetModelSpace();
    auto* element = new KVX3DElementObject();
    space->Add(element);
    EXPECT_EQ(space->Add(element), Pfad::eDuplicateKey);
    EXPECT_EQ(space->Remove(element), Pfad::eOk);
    EXPECT_TRUE(element->IsErased());
    EXPECT_FALSE(space->Contains(element->GetHandle()));
    EXPECT_EQ(space->Remove(element), Pfad::eKeyNotFound);
}

TEST(Containers, refuseObjectsOfAnotherDatabase)
{
    PfDbDatabase first, second;
    auto* element = new KVX3DElementObject();
    first.AddObject(element);
    EXPECT_EQ(second.GetModelSpace()->Add(element), Pfad::eInvalidInput);
    PfDbObjContainer loose;
    auto* orphan = new KVX3DElementObject();
    EXPECT_EQ(loose.Add(orphan), Pfad::eInvalidInput);
    delete orphan;
}

TEST(ObjectManagers, registeredByNameOnce)
{
    PfDbDatabase database;
    auto* tracks = new PfDbObjContainer();
    EXPECT_EQ(database.GetObjManager(L"TRACKS"), nullptr);
    EXPECT_EQ(database.AddObjManager(L"TRACKS", tracks), Pfad::eOk);
    EXPECT_NE(tracks->GetHandle(), kPfDbNullHandle);
    EXPECT_EQ(database.GetObjManager(L"TRACKS"), tracks);
    auto* other = new PfDbObjContainer();
    EXPECT_EQ(database.AddObjManager(L"TRACKS", other), Pfad::eDuplicateKey);
    delete other;
    EXPECT_EQ(database.AddObjManager(L"", tracks), Pfad::eInvalidInput);
}

TEST(Documents, getItemOpensLiveObjectsOnly)
{
    PfDbDocument document;
    auto* element = new KVX3DElementObject();
    document.GetDatabase()->GetModelSpace()->Add(element);
    EXPECT_EQ(document.GetItem(element->GetHandle()), element);
    EXPECT_EQ(document.GetItem(element->GetHandle(), PfDbDocument::kForWrite), element);
    element->Erase();
    EXPECT_EQ(document.GetItem(element->GetHandle()), nullptr);
    EXPECT_EQ(document.GetItem(12345), nullptr);
}

TEST(Documents, selectionKeepsEachIdOnceInOrder)
{
    PfDbDocument document;
    PfDbSelectionSet& selection = document.GetSelectionSet();
    EXPECT_TRUE(selection.Add(7));
    EXPECT_TRUE(selection.Add(3));
    EXPECT_FALSE(selection.Add(7));
    EXPECT_FALSE(selection.Add(kPfDbNullHandle));
    EXPECT_EQ(selection.Ids(), (std::vector<PfDbHandle>{7, 3}));
    EXPECT_TRUE(selection.Remove(7));
    EXPECT_FALSE(selection.Contains(7));
    EXPECT_TRUE(document.GetHighlightedSet().IsEmpty());
}

} // namespace
