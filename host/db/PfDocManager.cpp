#include "PfDocManager.h"

#include "PfDbDatabase.h"
#include "PfDbDocument.h"
#include "PfDbDocumentFile.h"
#include "PfDocManagerReactor.h"

#include <QFileInfo>

#include <algorithm>

PfDocManager::PfDocManager() = default;

PfDocManager::~PfDocManager()
{
    // The process's manager is destroyed at exit, after (or before) the
    // reactors and the singletons they reach: nobody is told any more.
    m_reactors.clear();
    CloseAll();
}

PfDbDocument* PfDocManager::adopt(std::unique_ptr<PfDbDocument> document)
{
    m_documents.push_back(std::move(document));
    return m_documents.back().get();
}

PfDbDocument* PfDocManager::NewDocument()
{
    PfDbDocument* document = adopt(std::make_unique<PfDbDocument>());
    SetCurrentDocument(document);
    return document;
}

PfDbDocument* PfDocManager::OpenDocument(const QString& filePath, PfDbLoadReport* report, QString* error)
{
    std::unique_ptr<PfDbDatabase> database = PfDbDocumentFile::Read(filePath, report, error);
    if (!database)
        return nullptr;
    PfDbDocument* document =
        adopt(std::make_unique<PfDbDocument>(std::move(database), QFileInfo(filePath).absoluteFilePath()));
    const std::vector<PfDocManagerReactor*> reactors = m_reactors;
    for (PfDocManagerReactor* reactor : reactors)
        reactor->documentOpened(document);
    SetCurrentDocument(document);
    return document;
}

void PfDocManager::CloseDocument(PfDbDocument* document)
{
    auto it = std::find_if(m_documents.begin(), m_documents.end(),
                           [document](const std::unique_ptr<PfDbDocument>& d) { return d.get() == document; });
    if (it == m_documents.end())
        return;
    if (m_current == document)
        SetCurrentDocument(nullptr);
    const std::vector<PfDocManagerReactor*> reactors = m_reactors;
    for (PfDocManagerReactor* reactor : reactors)
        reactor->documentToBeDestroyed(document);
    m_documents.erase(it);
}

void PfDocManager::CloseAll()
{
    while (!m_documents.empty())
        CloseDocument(m_documents.back().get());
}

void PfDocManager::SetCurrentDocument(PfDbDocument* document)
{
    if (document == m_current)
        return;
    m_current = document;
    const std::vector<PfDocManagerReactor*> reactors = m_reactors;
    for (PfDocManagerReactor* reactor : reactors)
        reactor->documentActivated(document);
}

std::vector<PfDbDocument*> PfDocManager::Documents() const
{
    std::vector<PfDbDocument*> documents;
    for (const auto& document : m_documents)
        documents.push_back(document.get());
    return documents;
}

void PfDocManager::AddReactor(PfDocManagerReactor* reactor)
{
    if (reactor && std::find(m_reactors.begin(), m_reactors.end(), reactor) == m_reactors.end())
        m_reactors.push_back(reactor);
}

void PfDocManager::RemoveReactor(PfDocManagerReactor* reactor)
{
    m_reactors.erase(std::remove(m_reactors.begin(), m_reactors.end(), reactor), m_reactors.end());
}

PfDocManager* PfDocManagerPtr()
{
    static PfDocManager manager;
    return &manager;
}
