#pragma once

#include <QString>

#include <memory>
#include <vector>

class PfDbDocument;
class PfDbLoadReport;
class PfDocManagerReactor;

// The open documents of the process and which one is current.
class PfDocManager {
public:
    PfDocManager();
    ~PfDocManager();
    PfDocManager(const PfDocManager&) = delete;
    PfDocManager& operator=(const PfDocManager&) = delete;

    // A new empty document, made current.
    PfDbDocument* NewDocument();
    // Reads a document file; on success the document is made current. On
    // failure it answers null with the reason and nothing changes: the open
    // documents and the current one stay as they were.
    PfDbDocument* OpenDocument(const QString& filePath, PfDbLoadReport* report = nullptr, QString* error = nullptr);
    void CloseDocument(PfDbDocument* document);
    void CloseAll();

    PfDbDocument* CurrentDocument() const { return m_current; }
    void SetCurrentDocument(PfDbDocument* document);
    std::vector<PfDbDocument*> Documents() const;

    void AddReactor(PfDocManagerReactor* reactor);
    void RemoveReactor(PfDocManagerReactor* reactor);

private:
    PfDbDocument* adopt(std::unique_ptr<PfDbDocument> document);

    std::vector<std::unique_ptr<PfDbDocument>> m_documents;
    PfDbDocument* m_current = nullptr;
    std::vector<PfDocManagerReactor*> m_reactors;
};

// The process's document manager, made on first use.
PfDocManager* PfDocManagerPtr();
