#pragma once

#include "host/rx/PfRxObject.h"

#include <vector>

class PfDbDatabase;
class PfDbObject;
class PfDbTransaction;

// Hears the life of the transactions of the databases it is attached to.
// Every callback does nothing unless overridden.
class PfDbTransactionReactor : public PfRxObject {
    PFRX_DECLARE_MEMBERS(PfDbTransactionReactor)
public:
    virtual void TransactionAboutToStart(PfDbDatabase* database);
    virtual void TransactionStarted(PfDbDatabase* database);
    virtual void TransactionAboutToEnd(PfDbDatabase* database);
    virtual void TransactionEnded(PfDbDatabase* database);
    virtual void TransactionAboutToAbort(PfDbDatabase* database);
    virtual void TransactionAborted(PfDbDatabase* database);
    virtual void EndCalledOnOutermostTransaction(PfDbDatabase* database);
    virtual void ObjectIdSwapped(const PfDbObject* first, const PfDbObject* second);
    // The transactions concerned, most recent first for undo, oldest first
    // for redo: in the order they were replayed.
    virtual void TransactionUndone(PfDbDatabase* database, const std::vector<PfDbTransaction*>& transactions);
    virtual void TransactionRedone(PfDbDatabase* database, const std::vector<PfDbTransaction*>& transactions);
};
