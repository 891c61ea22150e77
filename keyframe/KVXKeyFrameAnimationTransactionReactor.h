#pragma once

#include "host/db/PfDbTransactionReactor.h"

// Keeps key-frame playback in step with undo and redo: when a step that
// touched a key frame is undone or redone, playback pauses, the camera
// animation is built again from the key frames as they now stand and the
// timeline's buttons are rebuilt. One instance hears every database from
// module load to unload.
class KVXKeyFrameAnimationTransactionReactor : public PfDbTransactionReactor {
    PFRX_DECLARE_MEMBERS(KVXKeyFrameAnimationTransactionReactor)
public:
    static void Attach();
    static void Detach();

    void TransactionAboutToStart(PfDbDatabase* database) override;
    void TransactionStarted(PfDbDatabase* database) override;
    void TransactionAboutToEnd(PfDbDatabase* database) override;
    void TransactionEnded(PfDbDatabase* database) override;
    void TransactionAboutToAbort(PfDbDatabase* database) override;
    void TransactionAborted(PfDbDatabase* database) override;
    void EndCalledOnOutermostTransaction(PfDbDatabase* database) override;
    void ObjectIdSwapped(const PfDbObject* first, const PfDbObject* second) override;
    void TransactionUndone(PfDbDatabase* database, const std::vector<PfDbTransaction*>& transactions) override;
    void TransactionRedone(PfDbDatabase* database, const std::vector<PfDbTransaction*>& transactions) override;

private:
    static bool hasKeyFrameTransaction(const std::vector<PfDbTransaction*>& transactions);
    static void updateAnimationWidget();
};
