#include "PfDbObjContainer.h"

#include "KVXSaveLoadXml.h"
#include "PfDbDatabase.h"
#include "host/rx/PfRxClass.h"

#include <algorithm>

PFRX_DEFINE_HOST_MEMBERS(PfDbObjContainer, PfDbObject, &PfRxCreateInstance<PfDbObjContainer>)

namespace {
const QString kItemsKey = QStringLiteral("Container_Items");
}

PfDbObjContainer::Iterator::Iterator(const PfDbObjContainer* container, std::size_t index)
    : m_container(container), m_index(index)
{
    skipErased();
}

PfDbObject* PfDbObjContainer::Iterator::operator*() const
{
    return m_container->GetDatabase()->OpenObject(m_container->m_items[m_index]);
}

PfDbObjContainer::Iterator& PfDbObjContainer::Iterator::operator++()
{
    ++m_index;
    skipErased();
    return *this;
}

void PfDbObjContainer::Iterator::skipErased()
{
    const auto& items = m_container->m_items;
    PfDbDatabase* database = m_container->GetDatabase();
    while (m_index < items.size() && !(database && database->OpenObject(items[m_index])))
        ++m_index;
}

Pfad::Error PfDbObjContainer::Add(PfDbObject* object)
{
    PfDbDatabase* database = GetDatabase();
    if (!object || !database || object == this)
        return Pfad::eInvalidInput;
    if (object->GetDatabase() && object->GetDatabase() != database)
        return Pfad::eInvalidInput;
    if (object->GetDatabase() && Contains(object->GetHandle()))
        return Pfad::eDuplicateKey;
    if (!object->GetDatabase())
        database->AddObject(object);
    AssertWriteEnabled();
    m_items.push_back(object->GetHandle());
    return Pfad::eOk;
}

Pfad::Error PfDbObjContainer::Remove(PfDbObject* object)
{
    if (!object || object->GetDatabase() != GetDatabase())
        return Pfad::eInvalidInput;
    auto it = std::find(m_items.begin(), m_items.end(), object->GetHandle());
    if (it == m_items.end())
        return Pfad::eKeyNotFound;
    AssertWriteEnabled();
    m_items.erase(it);
    return object->Erase();
}

bool PfDbObjContainer::Contains(PfDbHandle handle) const
{
    return std::find(m_items.begin(), m_items.end(), handle) != m_items.end();
}

std::size_t PfDbObjContainer::Size() const
{
    std::size_t count = 0;
    for (auto it = begin(); it != end(); ++it)
        ++count;
    return count;
}

std::size_t PfDbObjContainer::DropMissingItems()
{
    PfDbDatabase* database = GetDatabase();
    const std::size_t before = m_items.size();
    m_items.erase(std::remove_if(m_items.begin(), m_items.end(),
                                 [database](PfDbHandle h) { return !database || !database->OpenObject(h, true); }),
                  m_items.end());
    return before - m_items.size();
}

PfDbObjContainer::Iterator PfDbObjContainer::begin() const { return Iterator(this, 0); }

PfDbObjContainer::Iterator PfDbObjContainer::end() const { return Iterator(this, m_items.size()); }

Pfad::Error PfDbObjContainer::Save(KVXSaveLoadXml& archive)
{
    PfDbObject::Save(archive);
    archive.setHandles(kItemsKey, m_items);
    return Pfad::eOk;
}

Pfad::Error PfDbObjContainer::Load(KVXSaveLoadXml& archive)
{
    PfDbObject::Load(archive);
    m_items = archive.getHandles(kItemsKey);
    return Pfad::eOk;
}
