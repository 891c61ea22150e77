#pragma once

#include "PfDbObject.h"

#include <cstddef>
#include <iterator>
#include <vector>

// A database object that owns other database objects, in insertion order.
// Items are kept by handle: an erased item stays listed (so that un-erasing
// brings it back in place) but is skipped by iteration and Size().
class PfDbObjContainer : public PfDbObject {
    PFRX_DECLARE_MEMBERS(PfDbObjContainer)
public:
    class Iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = PfDbObject*;
        using difference_type = std::ptrdiff_t;
        using pointer = PfDbObject**;
        using reference = PfDbObject*;

        Iterator(const PfDbObjContainer* container, std::size_t index);
        PfDbObject* operator*() const;
        Iterator& operator++();
        bool operator==(const Iterator& other) const { return m_index == other.m_index; }
        bool operator!=(const Iterator& other) const { return m_index != other.m_index; }

    private:
        void skipErased();
        const PfDbObjContainer* m_container;
        std::size_t m_index;
    };

    // Adds the object to the container's database when it is in none yet
    // (which then owns it) and lists it. The container must be in a database.
    Pfad::Error Add(PfDbObject* object);
    // Unlists the object and erases it.
    Pfad::Error Remove(PfDbObject* object);
    bool Contains(PfDbHandle handle) const;
    std::size_t Size() const;

    Iterator begin() const;
    Iterator end() const;
    const std::vector<PfDbHandle>& ItemHandles() const { return m_items; }
    // Unlists handles that name no object of the database; answers how many.
    std::size_t DropMissingItems();

    Pfad::Error Save(KVXSaveLoadXml& archive) override;
    Pfad::Error Load(KVXSaveLoadXml& archive) override;

private:
    std::vector<PfDbHandle> m_items;
};
