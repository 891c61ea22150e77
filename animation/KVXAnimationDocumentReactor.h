#pragma once

#include "host/db/PfDocManagerReactor.h"

class KVXAnimatorManager;

// Keeps the animator manager on the current document: when another document
// becomes current (a new one, an opened file, a switch), the manager takes
// that document's records as they were saved.
class KVXAnimationDocumentReactor : public PfDocManagerReactor {
public:
    explicit KVXAnimationDocumentReactor(KVXAnimatorManager* manager);
    ~KVXAnimationDocumentReactor() override;

    void documentActivated(PfDbDocument* document) override;
    void documentToBeDestroyed(PfDbDocument* document) override;

private:
    KVXAnimatorManager* m_manager;
    PfDbDocument* m_followed = nullptr;
};
