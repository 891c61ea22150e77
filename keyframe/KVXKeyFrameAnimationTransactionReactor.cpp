#include "KVXKeyFrameAnimationTransactionReactor.h"

#include "KVXKeyFrame.h"
#include "KVXKeyFrameAnimationManager.h"
#include "host/db/PfDbTransaction.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/rx/PfRxClass.h"

PFRX_DEFINE_MEMBERS(KVXKeyFrameAnimationTransactionReactor, PfDbTransactionReactor,
                    &PfRxCreateInstance<KVXKeyFrameAnimationTransactionReactor>)

namespace {
KVXKeyFrameAnimationTransactionReactor*& attached()
{
    static KVXKeyFrameAnimationTransactionReactor* reactor = nullptr;
    return reactor;
}
} // namespace

void KVXKeyFrameAnimationTransactionReactor::Attach()
{
    if (attached())
        return;
    PfDbTransactionReactor::Desc();
    RxInit();
    attached() = new KVXKeyFrameAnimationTransactionReactor();
    PfDbTransactionManager::AddGlobalReactor(attached());
}

void KVXKeyFrameAnimationTransactionReactor::Detach()
{
    if (!attached())
        return;
    PfDbTransactionManager::RemoveGlobalReactor(attached());
    delete attached();
    attached() = nullptr;
    RxUninit();
}

void KVXKeyFrameAnimationTransactionReactor::TransactionAboutToStart(PfDbDatabase*) {}
void KVXKeyFrameAnimationTransactionReactor::TransactionStarted(PfDbDatabase*) {}
void KVXKeyFrameAnimationTransactionReactor::TransactionAboutToEnd(PfDbDatabase*) {}
void KVXKeyFrameAnimationTransactionReactor::TransactionEnded(PfDbDatabase*) {}
void KVXKeyFrameAnimationTransactionReactor::TransactionAboutToAbort(PfDbDatabase*) {}
void KVXKeyFrameAnimationTransactionReactor::TransactionAborted(PfDbDatabase*) {}
void KVXKeyFrameAnimationTransactionReactor::EndCalledOnOutermostTransaction(PfDbDatabase*) {}
void KVXKeyFrameAnimationTransactionReactor::ObjectIdSwapped(const PfDbObject*, const PfDbObject*) {}

void KVXKeyFrameAnimationTransactionReactor::TransactionUndone(PfDbDatabase*,
                                                               const std::vector<PfDbTransaction*>& transactions)
{
    if (hasKeyFrameTransaction(transactions))
        updateAnimationWidget();
}

void KVXKeyFrameAnimationTransactionReactor::TransactionRedone(PfDbDatabase*,
                                                               const std::vector<PfDbTransaction*>& transactions)
{
    if (hasKeyFrameTransaction(transactions))
        updateAnimationWidget();
}

bool KVXKeyFrameAnimationTransactionReactor::hasKeyFrameTransaction(const std::vector<PfDbTransaction*>& transactions)
{
    for (PfDbTransaction* transaction : transactions) {
        if (!PfDbTransaction::Cast(transaction))
            continue;
        for (PfDbObject* object : transaction->GetObjects())
            if (KVXKeyFrame::Cast(object))
                return true;
    }
    return false;
}

void KVXKeyFrameAnimationTransactionReactor::updateAnimationWidget()
{
    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    manager->PauseAnimation();
    manager->SetCameraAnimationDirty();
    manager->UpdateTimeLineWidget();
}
