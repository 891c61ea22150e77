#pragma once

#include "host/rx/PfadError.h"

#include <QString>

#include <memory>
#include <vector>

class PfDbDatabase;
class PfDbObject;
class PfDbTransaction;
class PfDbTransactionReactor;

// Transactions of one database and its undo history.
//
// Transactions nest: an inner one that ends folds into the outer one, an
// inner one that aborts restores only what it touched. When the outermost
// one ends, every touched object's state after is taken and the transaction
// becomes one step of undo (and the redo steps are dropped). Undo and redo
// are refused while a transaction is open.
class PfDbTransactionManager {
public:
    explicit PfDbTransactionManager(PfDbDatabase* database);
    ~PfDbTransactionManager();

    PfDbTransaction* StartTransaction();
    Pfad::Error EndTransaction();
    Pfad::Error AbortTransaction();
    PfDbTransaction* TopTransaction() const;
    int NumActiveTransactions() const { return static_cast<int>(m_active.size()); }

    bool CanUndo() const { return !m_undo.empty() && m_active.empty(); }
    bool CanRedo() const { return !m_redo.empty() && m_active.empty(); }
    // Undoes (redoes) up to count steps; false when none could be.
    bool Undo(int count = 1);
    bool Redo(int count = 1);
    void ClearUndoHistory();
    std::size_t UndoSteps() const { return m_undo.size(); }
    std::size_t RedoSteps() const { return m_redo.size(); }
    // The names of the steps that Undo and Redo would replay; empty when
    // there is none or it has no name.
    QString UndoName() const;
    QString RedoName() const;

    void AddReactor(PfDbTransactionReactor* reactor);
    void RemoveReactor(PfDbTransactionReactor* reactor);
    // Reactors that hear the transactions of every database, open now or
    // later (a module attaches one when it loads), after each database's own.
    static void AddGlobalReactor(PfDbTransactionReactor* reactor);
    static void RemoveGlobalReactor(PfDbTransactionReactor* reactor);

    // Called by the database and its objects when an object is added (isNew)
    // or about to change: the innermost transaction keeps its state before.
    void ObjectTouched(PfDbObject* object, bool isNew);
    // Grows whenever an object is added, opened for a change or erased, and
    // whenever a step is undone, redone or aborted: what a reader worked out
    // from the database's objects still holds while it stays the same.
    unsigned long long GetChangeCount() const { return m_changes; }
    // The last touch was bookkeeping, not an edit: it leaves the count.
    void ForgetLastChange()
    {
        if (m_changes > 0)
            --m_changes;
    }

private:
    using Steps = std::vector<std::unique_ptr<PfDbTransaction>>;

    template <class Call>
    void notify(Call call);
    // Restores up to count steps from the top of one stack (their states
    // before, or after) and moves them onto the other.
    std::vector<PfDbTransaction*> replay(Steps& from, Steps& to, int count, bool before);

    PfDbDatabase* m_database;
    Steps m_active;
    Steps m_undo;
    Steps m_redo;
    std::vector<PfDbTransactionReactor*> m_reactors;
    bool m_restoring = false;
    unsigned long long m_changes = 0;
};
