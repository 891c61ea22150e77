#include "KVXAnimationDocumentReactor.h"

#include "host/db/PfDocManager.h"

KVXAnimationDocumentReactor::KVXAnimationDocumentReactor(std::function<void(PfDbDocument*)> follow)
    : m_follow(std::move(follow))
{
    PfDocManagerPtr()->AddReactor(this);
    documentActivated(PfDocManagerPtr()->CurrentDocument());
}

KVXAnimationDocumentReactor::~KVXAnimationDocumentReactor() { PfDocManagerPtr()->RemoveReactor(this); }

void KVXAnimationDocumentReactor::documentActivated(PfDbDocument* document)
{
    m_followed = document;
    m_follow(document);
}

void KVXAnimationDocumentReactor::documentToBeDestroyed(PfDbDocument* document)
{
    if (document == m_followed)
        documentActivated(nullptr);
}
