#include "PfDbTransactionReactor.h"

#include "host/rx/PfRxClass.h"

PFRX_DEFINE_HOST_MEMBERS(PfDbTransactionReactor, PfRxObject, nullptr)

void PfDbTransactionReactor::TransactionAboutToStart(PfDbDatabase*) {}
void PfDbTransactionReactor::TransactionStarted(PfDbDatabase*) {}
void PfDbTransactionReactor::TransactionAboutToEnd(PfDbDatabase*) {}
void PfDbTransactionReactor::TransactionEnded(PfDbDatabase*) {}
void PfDbTransactionReactor::TransactionAboutToAbort(PfDbDatabase*) {}
void PfDbTransactionReactor::TransactionAborted(PfDbDatabase*) {}
void PfDbTransactionReactor::EndCalledOnOutermostTransaction(PfDbDatabase*) {}
void PfDbTransactionReactor::ObjectIdSwapped(const PfDbObject*, const PfDbObject*) {}
void PfDbTransactionReactor::TransactionUndone(PfDbDatabase*, const std::vector<PfDbTransaction*>&) {}
void PfDbTransactionReactor::TransactionRedone(PfDbDatabase*, const std::vector<PfDbTransaction*>&) {}
