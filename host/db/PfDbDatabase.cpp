#include "PfDbDatabase.h"

#include "PfDbDatabaseReactor.h"
#include "PfDbObjContainer.h"
#include "PfDbTransactionManager.h"

#include <algorithm>

PfDbDatabase::PfDbDatabase(bool withModelSpace) : m_transactions(std::make_unique<PfDbTransactionManager>(this))
{
    if (withModelSpace) {
        m_modelSpace = new PfDbObjContainer();
        AddObject(m_modelSpace);
    }
}

PfDbDatabase::~PfDbDatabase()
{
    const std::vector<PfDbDatabaseReactor*> reactors = m_reactors;
    for (PfDbDatabaseReactor* reactor : reactors)
        reactor->goodbye(this);
    m_reactors.clear();
    // Undo states refer to objects by handle only; drop them before the objects.
    m_transactions.reset();
}

void PfDbDatabase::adopt(PfDbObject* object, PfDbHandle handle)
{
    object->m_handle = handle;
    object->m_database = this;
    object->m_erased = false;
    m_objects.emplace(handle, std::unique_ptr<PfDbObject>(object));
    m_order.push_back(object);
}

PfDbHandle PfDbDatabase::AddObject(PfDbObject* object)
{
    if (!object || object->m_database)
        return kPfDbNullHandle;
    adopt(object, m_nextHandle++);
    m_transactions->ObjectTouched(object, true);
    const std::vector<PfDbDatabaseReactor*> reactors = m_reactors;
    for (PfDbDatabaseReactor* reactor : reactors)
        reactor->objectAppended(this, object);
    return object->m_handle;
}

Pfad::Error PfDbDatabase::AddObjectWithHandle(PfDbObject* object, PfDbHandle handle)
{
    if (!object || object->m_database || handle == kPfDbNullHandle)
        return Pfad::eInvalidInput;
    if (m_objects.count(handle))
        return Pfad::eDuplicateKey;
    adopt(object, handle);
    m_nextHandle = std::max(m_nextHandle, handle + 1);
    return Pfad::eOk;
}

PfDbObject* PfDbDatabase::OpenObject(PfDbHandle handle, bool openErased) const
{
    auto it = m_objects.find(handle);
    if (it == m_objects.end())
        return nullptr;
    PfDbObject* object = it->second.get();
    return (object->m_erased && !openErased) ? nullptr : object;
}

Pfad::Error PfDbDatabase::EraseObject(PfDbObject* object, bool erasing)
{
    if (!object || object->m_database != this)
        return Pfad::eInvalidInput;
    if (object->m_erased == erasing)
        return Pfad::eOk;
    m_transactions->ObjectTouched(object, false);
    object->m_erased = erasing;
    const std::vector<PfDbDatabaseReactor*> reactors = m_reactors;
    for (PfDbDatabaseReactor* reactor : reactors)
        reactor->objectErased(this, object, erasing);
    return Pfad::eOk;
}

void PfDbDatabase::NotifyModified(PfDbObject* object)
{
    const std::vector<PfDbDatabaseReactor*> reactors = m_reactors;
    for (PfDbDatabaseReactor* reactor : reactors)
        reactor->objectModified(this, object);
}

PfDbObjContainer* PfDbDatabase::GetObjManager(const std::wstring& name) const
{
    auto it = m_managers.find(name);
    return it == m_managers.end() ? nullptr : PfDbObjContainer::Cast(OpenObject(it->second));
}

Pfad::Error PfDbDatabase::AddObjManager(const std::wstring& name, PfDbObjContainer* manager)
{
    if (!manager || name.empty() || (manager->GetDatabase() && manager->GetDatabase() != this))
        return Pfad::eInvalidInput;
    if (m_managers.count(name))
        return Pfad::eDuplicateKey;
    // An empty manager made outside any edit is the database's own
    // bookkeeping (a module looking for its container), not a change of
    // the document: looking at a document must not mark it changed.
    const bool bookkeeping = !manager->GetDatabase() && manager->Size() == 0 &&
                             m_transactions->NumActiveTransactions() == 0;
    if (!manager->GetDatabase())
        AddObject(manager);
    if (bookkeeping)
        m_transactions->ForgetLastChange();
    m_managers.emplace(name, manager->GetHandle());
    return Pfad::eOk;
}

void PfDbDatabase::AddReactor(PfDbDatabaseReactor* reactor)
{
    if (reactor && std::find(m_reactors.begin(), m_reactors.end(), reactor) == m_reactors.end())
        m_reactors.push_back(reactor);
}

void PfDbDatabase::RemoveReactor(PfDbDatabaseReactor* reactor)
{
    m_reactors.erase(std::remove(m_reactors.begin(), m_reactors.end(), reactor), m_reactors.end());
}

void PfDbDatabase::SetNextHandle(PfDbHandle next) { m_nextHandle = std::max(m_nextHandle, next); }

void PfDbDatabase::SetModelSpace(PfDbObjContainer* modelSpace)
{
    if (modelSpace && modelSpace->GetDatabase() == this)
        m_modelSpace = modelSpace;
}

void PfDbDatabase::ReserveObjects(std::size_t count)
{
    m_objects.reserve(count);
    m_order.reserve(count);
}
