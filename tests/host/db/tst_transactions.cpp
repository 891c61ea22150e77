#include "host/db/KVXSaveLoadXml.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDatabaseReactor.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDbTransaction.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDbTransactionReactor.h"
#include "host/model/KVXTowerCraneObject.h"

#include <gtest/gtest.h>

namespace {

struct TransactionLog : PfDbTransactionReactor {
    std::vector<std::string> calls;
    std::vector<std::vector<PfDbHandle>> undone, redone;
    void TransactionStarted(PfDbDatabase*) override { calls.push_back("started"); }
    void TransactionEnded(PfDbDatabase*) override { calls.push_back("ended"); }
    void TransactionAborted(PfDbDatabase*) override { calls.push_back("aborted"); }
    void EndCalledOnOutermostTransaction(PfDbDatabase*) override { calls.push_back("outermost"); }
    void TransactionUndone(PfDbDatabase*, const std::vector<PfDbTransaction*>& transactions) override
    {
        for (PfDbTransaction* t : transactions)
            undone.push_back(t->GetObjectIds());
    }
    void TransactionRedone(PfDbDatabase*, const std::vector<PfDbTransaction*>& transactions) override
    {
        for (PfDbTransaction* t : transactions)
            redone.push_back(t->GetObjectIds());
    }
};

struct ErasureCount : PfDbDatabaseReactor {
    int erased = 0, unerased = 0;
    void objectErased(const PfDbDatabase*, const PfDbObject*, bool erasing) override
    {
        ++(erasing ? erased : unerased);
    }
};

// Everything an object saves: two equal snapshots mean an exact restore.
std::vector<std::pair<QString, QString>> snapshot(PfDbObject* object)
{
    KVXSaveLoadXml xml;
    object->Save(xml);
    std::vector<std::pair<QString, QString>> flat;
    for (const auto& p : xml.properties()) {
        QString value = QStringLiteral("%1|%2 %3 %4|%5").arg(p.integer).arg(p.number[0], 0, 'g', 17)
                            .arg(p.number[1], 0, 'g', 17).arg(p.number[2], 0, 'g', 17).arg(p.text);
        for (PfDbHandle h : p.handles)
            value += QStringLiteral(" %1").arg(h);
        flat.emplace_back(p.key, value);
    }
    return flat;
}

class Transactions : public ::testing::Test {
protected:
    void SetUp() override
    {
        manager()->AddReactor(&log);
        database()->AddReactor(&erasures);
        crane = new KVXTowerCraneObject();
        crane->SetName(L"TC1");
        crane->SetTowerHeight(30000);
        crane->SetPoints({{0, 0, 0}, {1000, 0, 0}});
        space()->Add(crane);
    }
    PfDbDatabase* database() { return document.GetDatabase(); }
    PfDbTransactionManager* manager() { return database()->TransactionManager(); }
    PfDbObjContainer* space() { return database()->GetModelSpace(); }

    PfDbDocument document;
    TransactionLog log;
    ErasureCount erasures;
    KVXTowerCraneObject* crane = nullptr;
};

TEST_F(Transactions, undoAndRedoOfAChangeRestoreExactly)
{
    const auto before = snapshot(crane);
    manager()->StartTransaction();
    static_cast<KVXTowerCraneObject*>(document.GetItem(crane->GetHandle(), PfDbDocument::kForWrite))
        ->SetTowerHeight(52000);
    crane->SetName(L"塔吊 1");
    crane->SetPoints({{5, 5, 5}});
    crane->SetBodyColor(QColor(10, 20, 30, 40));
    manager()->EndTransaction();
    const auto after = snapshot(crane);
    ASSERT_NE(before, after);

    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(manager()->Undo());
        EXPECT_EQ(snapshot(crane), before);
        ASSERT_TRUE(manager()->Redo());
        EXPECT_EQ(snapshot(crane), after);
    }
}

TEST_F(Transactions, undoOfAnAddErasesAndRedoBringsBack)
{
    manager()->StartTransaction();
    auto* added = new KVXTowerCraneObject();
    added->SetJibLength(61000.0);
    space()->Add(added);
    manager()->EndTransaction();
    const PfDbHandle handle = added->GetHandle();

    ASSERT_TRUE(manager()->Undo());
    EXPECT_EQ(document.GetItem(handle), nullptr);
    EXPECT_EQ(space()->Size(), 1u);
    EXPECT_EQ(erasures.erased, 1);
    ASSERT_TRUE(manager()->Redo());
    ASSERT_EQ(document.GetItem(handle), added);
    EXPECT_EQ(added->GetJibLength(), 61000.0);
    EXPECT_EQ(space()->Size(), 2u);
    EXPECT_EQ(erasures.unerased, 1);
}

TEST_F(Transactions, undoOfAnEraseBringsTheObjectBackInItsContainer)
{
    const auto before = snapshot(crane);
    manager()->StartTransaction();
    space()->Remove(crane);
    manager()->EndTransaction();
    EXPECT_EQ(erasures.erased, 1);
    EXPECT_EQ(space()->Size(), 0u);

    ASSERT_TRUE(manager()->Undo());
    EXPECT_EQ(erasures.unerased, 1);
    ASSERT_EQ(space()->Size(), 1u);
    EXPECT_EQ(*space()->begin(), crane);
    EXPECT_EQ(snapshot(crane), before);
    ASSERT_TRUE(manager()->Redo());
    EXPECT_EQ(erasures.erased, 2);
    EXPECT_EQ(space()->Size(), 0u);
}

TEST_F(Transactions, reactorsHearTheTransactionsConcerned)
{
    manager()->StartTransaction();
    crane->AssertWriteEnabled();
    crane->SetTowerHeight(4000);
    manager()->EndTransaction();
    EXPECT_EQ(log.calls, (std::vector<std::string>{"started", "outermost", "ended"}));
    manager()->Undo();
    manager()->Redo();
    const std::vector<std::vector<PfDbHandle>> expected{{crane->GetHandle()}};
    EXPECT_EQ(log.undone, expected);
    EXPECT_EQ(log.redone, expected);
}

TEST_F(Transactions, globalReactorsHearEveryDatabaseUntilRemoved)
{
    TransactionLog global;
    PfDbTransactionManager::AddGlobalReactor(&global);
    PfDbTransactionManager::AddGlobalReactor(&global);
    PfDbDocument later;
    for (PfDbTransactionManager* transactions : {manager(), later.GetDatabase()->TransactionManager()}) {
        transactions->StartTransaction();
        transactions->EndTransaction();
    }
    PfDbTransactionManager::RemoveGlobalReactor(&global);
    manager()->StartTransaction();
    manager()->EndTransaction();
    EXPECT_EQ(global.calls, (std::vector<std::string>{"started", "outermost", "ended", "started", "outermost",
                                                      "ended"}));
}

TEST_F(Transactions, undoSeveralStepsGoesBackInOrder)
{
    for (int height : {10000, 20000, 30000}) {
        manager()->StartTransaction();
        crane->AssertWriteEnabled();
        crane->SetTowerHeight(height);
        manager()->EndTransaction();
    }
    EXPECT_TRUE(manager()->Undo(2));
    EXPECT_EQ(crane->GetTowerHeight(), 10000);
    EXPECT_EQ(manager()->RedoSteps(), 2u);
    EXPECT_TRUE(manager()->Redo());
    EXPECT_EQ(crane->GetTowerHeight(), 20000);
}

TEST_F(Transactions, aNewTransactionDropsTheRedoSteps)
{
    manager()->StartTransaction();
    crane->AssertWriteEnabled();
    crane->SetTowerHeight(10000);
    manager()->EndTransaction();
    manager()->Undo();
    manager()->StartTransaction();
    crane->AssertWriteEnabled();
    crane->SetTowerHeight(20000);
    manager()->EndTransaction();
    EXPECT_FALSE(manager()->CanRedo());
    EXPECT_FALSE(manager()->Redo());
}

TEST_F(Transactions, abortRestoresAndLeavesNoUndoStep)
{
    const auto before = snapshot(crane);
    manager()->StartTransaction();
    crane->AssertWriteEnabled();
    crane->SetTowerHeight(99000);
    auto* added = new KVXTowerCraneObject();
    space()->Add(added);
    manager()->AbortTransaction();
    EXPECT_EQ(snapshot(crane), before);
    EXPECT_TRUE(added->IsErased());
    EXPECT_FALSE(manager()->CanUndo());
    EXPECT_EQ(log.calls.back(), "aborted");
}

TEST_F(Transactions, innerAbortKeepsTheOuterChanges)
{
    manager()->StartTransaction();
    crane->AssertWriteEnabled();
    crane->SetTowerHeight(100000);
    manager()->StartTransaction();
    crane->AssertWriteEnabled();
    crane->SetTowerHeight(200000);
    manager()->AbortTransaction();
    EXPECT_EQ(crane->GetTowerHeight(), 100000);
    manager()->EndTransaction();
    manager()->Undo();
    EXPECT_EQ(crane->GetTowerHeight(), 30000);
}

TEST_F(Transactions, nestedTransactionsFoldIntoOneStep)
{
    manager()->StartTransaction();
    crane->AssertWriteEnabled();
    crane->SetTowerHeight(100000);
    manager()->StartTransaction();
    auto* added = new KVXTowerCraneObject();
    space()->Add(added);
    crane->AssertWriteEnabled();
    crane->SetTowerHeight(200000);
    manager()->EndTransaction();
    manager()->EndTransaction();
    EXPECT_EQ(manager()->UndoSteps(), 1u);
    manager()->Undo();
    EXPECT_EQ(crane->GetTowerHeight(), 30000);
    EXPECT_TRUE(added->IsErased());
}

TEST_F(Transactions, stepsAreNamedByTheirOutermostNamedTransaction)
{
    const auto change = [this](const char* outer, const char* inner) {
        manager()->StartTransaction()->SetName(QString::fromUtf8(outer));
        manager()->StartTransaction()->SetName(QString::fromUtf8(inner));
        crane->AssertWriteEnabled();
        crane->SetTowerHeight(crane->GetTowerHeight() + 1000);
        manager()->EndTransaction();
        manager()->EndTransaction();
    };
    EXPECT_EQ(manager()->UndoName(), QString());
    change("升高塔吊", "修改高度");
    change("", "修改高度");
    EXPECT_EQ(manager()->UndoName(), QStringLiteral("修改高度")) << "an unnamed step takes its inner name";
    manager()->Undo();
    EXPECT_EQ(manager()->UndoName(), QStringLiteral("升高塔吊"));
    EXPECT_EQ(manager()->RedoName(), QStringLiteral("修改高度"));
}

TEST_F(Transactions, undoIsRefusedWhileATransactionIsOpen)
{
    manager()->StartTransaction();
    crane->AssertWriteEnabled();
    crane->SetTowerHeight(5000);
    manager()->EndTransaction();
    manager()->StartTransaction();
    EXPECT_FALSE(manager()->Undo());
    EXPECT_EQ(crane->GetTowerHeight(), 5000);
    manager()->EndTransaction();
    EXPECT_EQ(manager()->EndTransaction(), Pfad::eNotInTransaction);
    EXPECT_EQ(manager()->AbortTransaction(), Pfad::eNotInTransaction);
}

TEST_F(Transactions, changedObjectsAddedByHandKeepTheirFirstState)
{
    PfDbTransaction* transaction = manager()->StartTransaction();
    EXPECT_EQ(transaction->AddObject(crane, PfDbTransaction::kChanged), Pfad::eOk);
    crane->SetTowerHeight(7000);
    EXPECT_EQ(transaction->AddObject(crane, PfDbTransaction::kChanged), Pfad::eOk);
    PfDbTransaction foreign;
    EXPECT_EQ(foreign.AddObject(crane, PfDbTransaction::kNew), Pfad::eInvalidInput);
    manager()->EndTransaction();
    manager()->Undo();
    EXPECT_EQ(crane->GetTowerHeight(), 30000);
}

TEST_F(Transactions, emptyTransactionsLeaveNoStep)
{
    manager()->StartTransaction();
    manager()->EndTransaction();
    EXPECT_FALSE(manager()->CanUndo());
}

} // namespace
