#include "PfDbDocument.h"

#include "PfDbDatabase.h"
#include "PfDbDocumentFile.h"
#include "PfDbObject.h"
#include "PfGsView.h"

PfDbDocument::PfDbDocument() : m_database(std::make_unique<PfDbDatabase>()) {}

PfDbDocument::PfDbDocument(std::unique_ptr<PfDbDatabase> database, const QString& filePath)
    : m_database(std::move(database)), m_filePath(filePath)
{
}

PfDbDocument::~PfDbDocument() = default;

void PfDbDocument::SetActiveView(std::unique_ptr<PfGsView> view) { m_activeView = std::move(view); }

PfDbObject* PfDbDocument::GetItem(PfDbHandle id, OpenMode mode) const
{
    PfDbObject* object = m_database->OpenObject(id);
    if (object && mode == kForWrite)
        object->AssertWriteEnabled();
    return object;
}

bool PfDbDocument::Save(const QString& filePath, QString* error)
{
    if (!PfDbDocumentFile::Write(*m_database, filePath, error))
        return false;
    m_filePath = filePath;
    return true;
}
