#include "animation/KVXAnimationNames.h"
#include "animation/KVXAnimatorManager.h"
#include "animation/KVXTowerAnimation.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfGsModelView.h"
#include "host/vpe/render/CViewer.h"
#include "keyframe/KVXDateAnimationClockTimer.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using Records = std::vector<KVXAnimation*>;

std::vector<int> numbersOf(const Records& records)
{
    std::vector<int> numbers;
    for (const KVXAnimation* record : records)
        numbers.push_back(record->getNumber());
    return numbers;
}

// A document with a view, two storeys and a crane; the manager follows it.
class AnimatorManager : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        view = PfGsModelView::Attach(document);
        first = addStorey(0.0);
        second = addStorey(20000.0);
        auto* crane = new KVXTowerCraneObject();
        modelSpace()->Add(crane);
        craneId = static_cast<qint64>(crane->GetHandle());
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }

    PfDbObjContainer* modelSpace() const { return document->GetDatabase()->GetModelSpace(); }
    qint64 addStorey(double x)
    {
        auto* storey = new KVX3DElementObject();
        storey->AddBody(vpe::CBody::CreateBox({x, 0, 0}, {x + 10000, 6000, 3000}));
        modelSpace()->Add(storey);
        return static_cast<qint64>(storey->GetHandle());
    }
    KVXAnimation* add(qint64 objId, KVXAnimation::AnimType type = KVXAnimation::Construction)
    {
        return manager->addKvxAnimation(objId, type, KVXAnimation::LeftToRight);
    }
    KVXAnimation* addDated(qint64 objId, const QDate& start, const QDate& end)
    {
        KVXAnimation* record = add(objId);
        record->setStartDate(start);
        record->setEndDate(end);
        return record;
    }

    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    PfDbDocument* document = nullptr;
    PfGsModelView* view = nullptr;
    qint64 first = 0;
    qint64 second = 0;
    qint64 craneId = 0;
};

TEST_F(AnimatorManager, numbersRecordsInCreationOrderAndFindsThem)
{
    KVXAnimation* a = add(first);
    KVXAnimation* b = add(second);
    KVXAnimation* c = add(first, KVXAnimation::Emphasis);
    ASSERT_TRUE(a && b && c);
    EXPECT_EQ(numbersOf(manager->getAnimationVector()), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(manager->findKVXAnimation(2), b);
    EXPECT_EQ(manager->findKVXAnimation(4), nullptr);
    EXPECT_EQ(manager->findAnimationsByObjId(first), (Records{a, c}));

    Records out{b};
    manager->GetALlAnimationByObjId(first, out);
    EXPECT_EQ(out, (Records{b, a, c})) << "appends without clearing";

    // The records belong to the document.
    EXPECT_EQ(c->GetDatabase(), document->GetDatabase());
    EXPECT_EQ(document->GetItem(c->GetHandle()), c);
}

TEST_F(AnimatorManager, signalsAndSlotKeepTheirMetaMethodOrder)
{
    const QMetaObject* meta = manager->metaObject();
    const int offset = meta->methodOffset();
    EXPECT_EQ(meta->method(offset).methodSignature(), "isPreviewingSignal(bool)");
    EXPECT_EQ(meta->method(offset + 1).methodSignature(), "dataChangedSignal()");
    EXPECT_EQ(meta->method(offset + 2).methodSignature(), "stopSlot()");
}

TEST_F(AnimatorManager, unknownElementGetsNoRecordAndUsesNoNumber)
{
    EXPECT_EQ(add(first + 1000), nullptr);
    EXPECT_EQ(add(first)->getNumber(), 1);
}

TEST_F(AnimatorManager, towerCranesGetTowerRecords)
{
    EXPECT_NE(KVXTowerAnimation::Cast(add(craneId, KVXAnimation::Rotation)), nullptr);
    EXPECT_EQ(KVXTowerAnimation::Cast(add(first)), nullptr);
}

TEST_F(AnimatorManager, deletionByNumberKeepsTheOrderOfTheRest)
{
    KVXAnimation* a = add(first);
    KVXAnimation* b = add(first);
    KVXAnimation* c = add(second);
    const PfDbHandle bHandle = b->GetHandle();
    manager->deleteKvxAnimation(2);
    EXPECT_EQ(manager->getAnimationVector(), (Records{a, c}));
    EXPECT_EQ(manager->findAnimationsByObjId(first), (Records{a}));
    EXPECT_EQ(manager->findKVXAnimation(2), nullptr);
    EXPECT_EQ(document->GetItem(bHandle), nullptr) << "removed from the document";

    manager->deleteKvxAnimation(42);
    EXPECT_EQ(manager->getAnimationVector().size(), 2u);
    EXPECT_EQ(add(second)->getNumber(), 4) << "numbers are not reused";
}

TEST_F(AnimatorManager, deletionByElementTakesAllOfItsRecords)
{
    add(first);
    KVXAnimation* kept = add(second);
    add(first, KVXAnimation::Rotation);
    EXPECT_TRUE(manager->deleteAnimationByObjId(first));
    EXPECT_EQ(manager->getAnimationVector(), (Records{kept}));
    EXPECT_TRUE(manager->findAnimationsByObjId(first).empty());
    EXPECT_EQ(manager->findKVXAnimation(1), nullptr);
    EXPECT_EQ(manager->findKVXAnimation(3), nullptr);
    EXPECT_FALSE(manager->deleteAnimationByObjId(first));
}

TEST_F(AnimatorManager, erasingAnElementDropsItsRecordsWithOneSignal)
{
    add(first);
    add(first);
    add(second);
    QSignalSpy changed(manager, &KVXAnimatorManager::dataChangedSignal);

    KVXAnimation* record = manager->findKVXAnimation(3);
    document->GetDatabase()->EraseObject(document->GetItem(static_cast<PfDbHandle>(first)));
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(manager->getAnimationVector(), (Records{record}));

    // The element's un-erase tells nobody; its records come back through
    // their own un-erase.
    document->GetDatabase()->EraseObject(
        document->GetDatabase()->OpenObject(static_cast<PfDbHandle>(first), true), false);
    EXPECT_EQ(changed.count(), 1);
}

TEST_F(AnimatorManager, undoAndRedoTakeRecordsOutAndPutThemBackInTheirPlace)
{
    // Undoing the addition of a record used to leave it in the schedule,
    // erased from its document: it played and was listed as if still there.
    KVXAnimation* a = add(first);
    PfDbTransactionManager* transactions = document->GetDatabase()->TransactionManager();
    transactions->StartTransaction();
    KVXAnimation* b = add(second);
    transactions->EndTransaction();
    KVXAnimation* c = add(first);
    QSignalSpy changed(manager, &KVXAnimatorManager::dataChangedSignal);

    transactions->Undo();
    EXPECT_EQ(manager->getAnimationVector(), (Records{a, c}));
    EXPECT_EQ(manager->findKVXAnimation(2), nullptr);
    EXPECT_TRUE(manager->findAnimationsByObjId(second).empty());
    transactions->Redo();
    EXPECT_EQ(manager->getAnimationVector(), (Records{a, b, c})) << "back in creation order";
    EXPECT_EQ(manager->findKVXAnimation(2), b);
    EXPECT_EQ(manager->findAnimationsByObjId(second), Records{b});
    EXPECT_EQ(changed.count(), 2);

    // A deletion undone brings the record back under its element.
    transactions->StartTransaction();
    manager->deleteKvxAnimation(1);
    transactions->EndTransaction();
    EXPECT_EQ(manager->findAnimationsByObjId(first), Records{c});
    transactions->Undo();
    EXPECT_EQ(manager->findAnimationsByObjId(first), (Records{a, c}));
    EXPECT_EQ(add(second)->getNumber(), 4) << "numbers are not reused";
}

TEST_F(AnimatorManager, aRecordMovedToAnotherElementIsFiledUnderIt)
{
    // Moving a record to another element used to leave it filed under the
    // old one: erasing the old element deleted it, and conflicts on the new
    // one were missed.
    KVXAnimation* moved = addDated(first, QDate(2025, 3, 1), QDate(2025, 3, 10));
    KVXAnimation* there = addDated(second, QDate(2025, 3, 5), QDate(2025, 3, 15));
    PfDbTransactionManager* transactions = document->GetDatabase()->TransactionManager();
    transactions->StartTransaction();
    moved->AssertWriteEnabled();
    moved->setObjId(second);
    transactions->EndTransaction();
    EXPECT_EQ(manager->findAnimationsByObjId(first), Records{});
    EXPECT_EQ(manager->findAnimationsByObjId(second), (Records{moved, there}));
    EXPECT_EQ(manager->findConflictAnimation(there).size(), 1u) << "the overlap on the new element is seen";

    // Undone and redone, the record follows.
    transactions->Undo();
    EXPECT_EQ(manager->findAnimationsByObjId(first), Records{moved});
    EXPECT_EQ(manager->findAnimationsByObjId(second), Records{there});
    transactions->Redo();
    EXPECT_EQ(manager->findAnimationsByObjId(second), (Records{moved, there}));

    document->GetDatabase()->EraseObject(document->GetItem(static_cast<PfDbHandle>(first)));
    EXPECT_EQ(manager->getAnimationVector(), (Records{moved, there})) << "the old element takes nothing with it";
}

TEST_F(AnimatorManager, clearingRestartsTheNumbersAndLeavesTheDocument)
{
    KVXAnimation* record = add(first);
    add(first);
    manager->clearAnimations();
    EXPECT_TRUE(manager->getAnimationVector().empty());
    EXPECT_TRUE(manager->findAnimationsByObjId(first).empty());
    EXPECT_EQ(document->GetItem(record->GetHandle()), record);
    EXPECT_EQ(add(second)->getNumber(), 1);
}

TEST_F(AnimatorManager, readingContinuesAfterTheLargestNumberInLoadOrder)
{
    for (int number : {3, 7, 5})
        modelSpace()->Add(new KVXAnimation(number, first, KVXAnimation::Construction, KVXAnimation::LeftToRight));
    auto* path = new KVXAnimation(4, second, KVXAnimation::Path, KVXAnimation::LeftToRight);
    modelSpace()->Add(path);
    QSignalSpy changed(manager, &KVXAnimatorManager::dataChangedSignal);

    manager->clearAnimations();
    manager->readAnimationData();
    EXPECT_EQ(numbersOf(manager->getAnimationVector()), (std::vector<int>{3, 7, 5, 4}));
    EXPECT_EQ(numbersOf(manager->findAnimationsByObjId(first)), (std::vector<int>{3, 7, 5}));
    EXPECT_EQ(changed.count(), 1);
    EXPECT_FALSE(path->getVisibleFroAnimation()) << "paths are hidden outside playback";
    EXPECT_EQ(add(first)->getNumber(), 8);
}

TEST_F(AnimatorManager, aReopenedProjectComesBackAsSaved)
{
    addDated(first, QDate(2024, 3, 1), QDate(2024, 3, 11));
    add(second, KVXAnimation::Emphasis);
    add(first, KVXAnimation::Demolition);
    manager->deleteKvxAnimation(2);
    QTemporaryDir folder;
    const QString file = folder.filePath("site.kvx");
    ASSERT_TRUE(document->Save(file));
    PfDocManagerPtr()->CloseAll();
    EXPECT_TRUE(manager->getAnimationVector().empty()) << "no document, no records";

    PfDbDocument* reopened = PfDocManagerPtr()->OpenDocument(file);
    ASSERT_NE(reopened, nullptr);
    EXPECT_EQ(numbersOf(manager->getAnimationVector()), (std::vector<int>{1, 3}));
    EXPECT_EQ(manager->findKVXAnimation(1)->getEndDate(), QDate(2024, 3, 11));
    EXPECT_EQ(manager->findKVXAnimation(3)->getAnimationType(), KVXAnimation::Demolition);
    document = reopened;
    EXPECT_EQ(add(first)->getNumber(), 4);

    // Erasing follows the reopened document's database.
    document->GetDatabase()->EraseObject(document->GetItem(static_cast<PfDbHandle>(first)));
    EXPECT_TRUE(manager->getAnimationVector().empty());
}

TEST_F(AnimatorManager, followsTheCurrentDocument)
{
    add(first);
    PfDbDocument* other = PfDocManagerPtr()->NewDocument();
    EXPECT_TRUE(manager->getAnimationVector().empty());
    auto* element = new KVX3DElementObject();
    other->GetDatabase()->GetModelSpace()->Add(element);
    EXPECT_EQ(add(static_cast<qint64>(element->GetHandle()))->getNumber(), 1);

    PfDocManagerPtr()->SetCurrentDocument(document);
    ASSERT_EQ(manager->getAnimationVector().size(), 1u);
    EXPECT_EQ(manager->getAnimationVector()[0]->GetDatabase(), document->GetDatabase());
    QSignalSpy changed(manager, &KVXAnimatorManager::dataChangedSignal);
    other->GetDatabase()->EraseObject(element);
    EXPECT_EQ(changed.count(), 0) << "the other document is no longer heard";
    document->GetDatabase()->EraseObject(document->GetItem(static_cast<PfDbHandle>(first)));
    EXPECT_EQ(changed.count(), 1);
    EXPECT_TRUE(manager->getAnimationVector().empty());
}

TEST_F(AnimatorManager, copiesRecordsOntoAnotherElement)
{
    KVXAnimation* original = addDated(first, QDate(2024, 5, 1), QDate(2024, 5, 20));
    original->setLoopPlayback(true);
    original->setLoopEndDate(QDate(2024, 6, 1));
    original->setTranslationType(KVXAnimation::BottomUp);
    Records source{original};
    Records copies;
    manager->CopyAnimationToElement(second, source, copies);
    ASSERT_EQ(copies.size(), 1u);
    KVXAnimation* copy = copies[0];
    EXPECT_EQ(copy->getNumber(), 2);
    EXPECT_EQ(copy->getObjId(), second);
    EXPECT_EQ(copy->getEndDate(), QDate(2024, 5, 20));
    EXPECT_EQ(copy->getLoopEndDate(), QDate(2024, 6, 1));
    EXPECT_EQ(copy->getTranslationType(), KVXAnimation::BottomUp);
    EXPECT_EQ(manager->findAnimationsByObjId(second), (Records{copy}));
}

// ---- the date span ----

TEST_F(AnimatorManager, emptyScheduleSpansToday)
{
    manager->updateAllAnimationsDateRange();
    EXPECT_EQ(manager->getAllAnimationsStartDate(), QDate::currentDate());
    EXPECT_EQ(manager->getAllAnimationsEndDate(), QDate::currentDate());
    EXPECT_EQ(manager->getAllAnimationsTimeLength(), 0.0);
}

TEST_F(AnimatorManager, spanRunsFromTheEarliestStartToTheLatestEndLoopsIncluded)
{
    addDated(first, QDate(2024, 1, 10), QDate(2024, 1, 20));
    KVXAnimation* looped = addDated(second, QDate(2024, 1, 1), QDate(2024, 1, 5));
    manager->updateAllAnimationsDateRange();
    EXPECT_EQ(manager->getAllAnimationsStartDate(), QDate(2024, 1, 1));
    EXPECT_EQ(manager->getAllAnimationsEndDate(), QDate(2024, 1, 20));
    EXPECT_DOUBLE_EQ(manager->getAllAnimationsTimeLength(), 19.0);

    looped->setLoopPlayback(true);
    looped->setLoopEndDate(QDate(2024, 1, 31));
    manager->updateAllAnimationsDateRange();
    EXPECT_DOUBLE_EQ(manager->getAllAnimationsTimeLength(), 30.0);
    EXPECT_EQ(manager->getAllAnimationsEndDate(), QDate(2024, 1, 31));

    // A loop end before the end does not shorten anything.
    looped->setLoopEndDate(QDate(2024, 1, 2));
    manager->updateAllAnimationsDateRange();
    EXPECT_DOUBLE_EQ(manager->getAllAnimationsTimeLength(), 19.0);
}

TEST_F(AnimatorManager, playTimeOfDatesFollowsTheDayScale)
{
    addDated(first, QDate(2024, 1, 1), QDate(2024, 1, 31));
    manager->setDayToSeconds(0.5);
    manager->updateAllAnimationsDateRange();
    EXPECT_DOUBLE_EQ(manager->getAllAnimationsTimeLength(), 15.0);
    EXPECT_EQ(manager->getAllAnimationsEndDate(), QDate(2024, 1, 31));
    EXPECT_DOUBLE_EQ(manager->getAnimationTimeAtDate(QDate(2024, 1, 11)), 5.0);
    EXPECT_DOUBLE_EQ(manager->getAnimationTimeAtDate(QDate(2023, 12, 30)), -1.0);
    manager->setDayToSeconds(1.0);
}

TEST_F(AnimatorManager, damagedDatesDoNotMoveTheSpan)
{
    addDated(first, QDate(2024, 2, 1), QDate(2024, 2, 11));
    addDated(second, QDate(), QDate());
    manager->updateAllAnimationsDateRange();
    EXPECT_EQ(manager->getAllAnimationsStartDate(), QDate(2024, 2, 1));
    EXPECT_DOUBLE_EQ(manager->getAllAnimationsTimeLength(), 10.0);
}

TEST_F(AnimatorManager, dateClockReceivesTheSpan)
{
    addDated(first, QDate(2024, 1, 1), QDate(2024, 1, 11));
    manager->setDayToSeconds(2.0);
    manager->updateAllAnimationsDateRange();
    manager->setDayToSeconds(1.0);
    KVXDateAnimationClockTimer* clock =
        KVXDateAnimationClockTimer::GetOrCreate(KVXAnimationNames::kDateAnimationClockTimer);
    ASSERT_NE(clock, nullptr);
    EXPECT_DOUBLE_EQ(clock->GetEndTime(), 20.0);
    EXPECT_EQ(clock->GetStartDate(), QDate(2024, 1, 1));
    EXPECT_EQ(clock->GetEndDate(), QDate(2024, 1, 11));
    EXPECT_DOUBLE_EQ(clock->TimeForDate(QDate(2024, 1, 6)), 10.0);
}

TEST_F(AnimatorManager, startAnimatorsEnablesThemAndAsksForAFrame)
{
    KVXAnimation* record = add(first);
    vpe::CViewer* viewer = view->GetViewer();
    vpe::CAnimation* animation = viewer->GetAnimationManager()->CreateAnimation("1", 10.0);
    vpe::CAnimator* animator = viewer->GetAnimationManager()->CreateAnimator("1", animation);
    record->setAnimation(animation);
    record->setAnimator(animator);
    viewer->SetDirty(false);
    manager->startAnimators();
    EXPECT_TRUE(animator->IsEnabled());
    EXPECT_TRUE(viewer->IsDirty());

    manager->stop();
    EXPECT_EQ(viewer->GetAnimationManager()->FindAnimator("1"), nullptr);
    EXPECT_EQ(record->getAnimation(), nullptr);
    EXPECT_EQ(manager->getPlayState(), 0);
}

} // namespace
