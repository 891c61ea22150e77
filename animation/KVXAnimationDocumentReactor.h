#pragma once

#include "host/db/PfDocManagerReactor.h"

#include <functional>


// Keeps the animator manager on the current document: when another document
// becomes current (a new one, an opened file, a switch), follow is called
// with it (null when none is left), and the manager takes that document's
// records as they were saved.
class KVXAnimationDocumentReactor : public PfDocManagerReactor {
public:
    explicit KVXAnimationDocumentReactor(std::function<void(PfDbDocument*)> follow);
    ~KVXAnimationDocumentReactor() override;

    void documentActivated(PfDbDocument* document) override;
    void documentToBeDestroyed(PfDbDocument* document) override;

private:
    std::function<void(PfDbDocument*)> m_follow;
    PfDbDocument* m_followed = nullptr;
};
