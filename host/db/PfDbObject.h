#pragma once

#include "PfDbHandle.h"
#include "host/rx/PfRxObject.h"
#include "host/rx/PfadError.h"

class KVXSaveLoadXml;
class PfDbDatabase;
class PfGsView;

namespace osg {
class Node;
}

// A database object: owned by its database once added, known by a handle that
// stays its own for the life of the database, erased by flag so that undo can
// bring it back.
//
// Save writes every persisted property, Load reads them back and must leave
// the object exactly as it was when saved (whatever it held before): undo,
// redo and document loading all rely on that.
//
// Inside a transaction, call AssertWriteEnabled() before changing an object
// (or open it for write through the document) so that undo can restore the
// state it had before; erasing and container changes do so themselves.
class PfDbObject : public PfRxObject {
    PFRX_DECLARE_MEMBERS(PfDbObject)
public:
    PfDbObject() = default;
    PfDbObject(const PfDbObject& other);
    PfDbObject& operator=(const PfDbObject&) = delete;
    ~PfDbObject() override = default;

    PfDbHandle GetHandle() const { return m_handle; }
    PfDbDatabase* GetDatabase() const { return m_database; }
    bool IsErased() const { return m_erased; }

    // Erases (or with false un-erases) the object through its database.
    Pfad::Error Erase(bool erasing = true);
    void AssertWriteEnabled();

    // The object's node in the view; null when it draws nothing there.
    osg::Node* GetSceneNode(const PfGsView* view) const;

    virtual Pfad::Error Save(KVXSaveLoadXml& archive);
    virtual Pfad::Error Load(KVXSaveLoadXml& archive);

private:
    friend class PfDbDatabase;

    PfDbHandle m_handle = kPfDbNullHandle;
    PfDbDatabase* m_database = nullptr;
    bool m_erased = false;
};
