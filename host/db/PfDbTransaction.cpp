#include "PfDbTransaction.h"

#include "PfDbDatabase.h"
#include "PfDbObject.h"
#include "host/rx/PfRxClass.h"

PFRX_DEFINE_HOST_MEMBERS(PfDbTransaction, PfRxObject, nullptr)

namespace {

void snapshot(PfDbObject* object, KVXSaveLoadXml& properties)
{
    properties.clear();
    object->Save(properties);
}

} // namespace

PfDbTransaction::PfDbTransaction(PfDbDatabase* database) : m_database(database) {}

Pfad::Error PfDbTransaction::AddObject(PfDbObject* object, EntryKind kind)
{
    if (!object || object->GetDatabase() != m_database)
        return Pfad::eInvalidInput;
    record(object, kind == kNew);
    return Pfad::eOk;
}

std::vector<PfDbHandle> PfDbTransaction::GetObjectIds() const
{
    std::vector<PfDbHandle> ids;
    ids.reserve(m_entries.size());
    for (const Entry& entry : m_entries)
        ids.push_back(entry.handle);
    return ids;
}

std::vector<PfDbObject*> PfDbTransaction::GetObjects() const
{
    std::vector<PfDbObject*> objects;
    for (const Entry& entry : m_entries) {
        if (PfDbObject* object = m_database->OpenObject(entry.handle, true))
            objects.push_back(object);
    }
    return objects;
}

void PfDbTransaction::record(PfDbObject* object, bool isNew)
{
    if (Touched(object->GetHandle()))
        return;
    Entry entry;
    entry.handle = object->GetHandle();
    if (!isNew) {
        entry.before.exists = true;
        entry.before.erased = object->IsErased();
        snapshot(object, entry.before.properties);
    }
    m_index.emplace(entry.handle, m_entries.size());
    m_entries.push_back(std::move(entry));
}

void PfDbTransaction::mergeInto(PfDbTransaction& outer)
{
    // An unnamed step takes the name of the first named one inside it.
    if (outer.m_name.isEmpty())
        outer.m_name = m_name;
    for (Entry& entry : m_entries) {
        if (outer.Touched(entry.handle))
            continue;
        outer.m_index.emplace(entry.handle, outer.m_entries.size());
        outer.m_entries.push_back(std::move(entry));
    }
    m_entries.clear();
    m_index.clear();
}

void PfDbTransaction::captureAfter()
{
    for (Entry& entry : m_entries) {
        PfDbObject* object = m_database->OpenObject(entry.handle, true);
        entry.after.exists = true;
        entry.after.erased = object->IsErased();
        snapshot(object, entry.after.properties);
    }
    m_afterCaptured = true;
}

void PfDbTransaction::undo()
{
    if (!m_afterCaptured)
        captureAfter();
    restore(true);
}

void PfDbTransaction::restore(bool before)
{
    // Undo walks back from the last change, redo forward from the first.
    const std::size_t count = m_entries.size();
    for (std::size_t i = 0; i < count; ++i) {
        Entry& entry = m_entries[before ? count - 1 - i : i];
        State& state = before ? entry.before : entry.after;
        PfDbObject* object = m_database->OpenObject(entry.handle, true);
        if (!state.exists) {
            m_database->EraseObject(object, true);
            continue;
        }
        state.properties.rewind();
        object->Load(state.properties);
        m_database->EraseObject(object, state.erased);
        m_database->NotifyModified(object);
    }
}
