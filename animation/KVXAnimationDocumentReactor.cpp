#include "KVXAnimationDocumentReactor.h"

#include "KVXAnimatorManager.h"
#include "host/db/PfDocManager.h"

KVXAnimationDocumentReactor::KVXAnimationDocumentReactor(KVXAnimatorManager* manager) : m_manager(manager)
{
    PfDocManagerPtr()->AddReactor(this);
    documentActivated(PfDocManagerPtr()->CurrentDocument());
}

KVXAnimationDocumentReactor::~KVXAnimationDocumentReactor() { PfDocManagerPtr()->RemoveReactor(this); }

void KVXAnimationDocumentReactor::documentActivated(PfDbDocument* document)
{
    m_followed = document;
    m_manager->followDocument(document);
}

void KVXAnimationDocumentReactor::documentToBeDestroyed(PfDbDocument* document)
{
    if (document == m_followed)
        documentActivated(nullptr);
}
