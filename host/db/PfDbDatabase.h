#pragma once

#include "PfDbHandle.h"
#include "host/rx/PfadError.h"

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class PfDbDatabaseReactor;
class PfDbObjContainer;
class PfDbObject;
class PfDbTransactionManager;

// Owns the objects of one document. Handles are given in increasing order
// and never given again. Erased objects stay (for undo) but OpenObject does
// not answer them. The model space holds the elements and animation records;
// named object managers hold whatever a module keeps apart from the model
// (key-frame tracks, for instance).
class PfDbDatabase {
public:
    // The document reader builds a database without a model space and sets
    // the one it reads.
    explicit PfDbDatabase(bool withModelSpace = true);
    ~PfDbDatabase();
    PfDbDatabase(const PfDbDatabase&) = delete;
    PfDbDatabase& operator=(const PfDbDatabase&) = delete;

    // Takes ownership and gives the object its handle; the null handle when
    // the object is null or belongs to a database already.
    PfDbHandle AddObject(PfDbObject* object);
    // Null for an unknown handle, or an erased object unless asked for.
    PfDbObject* OpenObject(PfDbHandle handle, bool openErased = false) const;
    // Erases (erasing true) or un-erases an object; reactors hear each change
    // once, and nothing happens when the object is in that state already.
    Pfad::Error EraseObject(PfDbObject* object, bool erasing = true);

    PfDbObjContainer* GetModelSpace() const { return m_modelSpace; }
    PfDbObjContainer* GetObjManager(const std::wstring& name) const;
    // eDuplicateKey when the name is taken. The manager is added to the
    // database when it is in none.
    Pfad::Error AddObjManager(const std::wstring& name, PfDbObjContainer* manager);
    const std::map<std::wstring, PfDbHandle>& ObjManagers() const { return m_managers; }

    // Tells the reactors that the object changed (its views draw it again).
    void NotifyModified(PfDbObject* object);

    void AddReactor(PfDbDatabaseReactor* reactor);
    void RemoveReactor(PfDbDatabaseReactor* reactor);
    PfDbTransactionManager* TransactionManager() const { return m_transactions.get(); }

    // Every object ever added, erased ones included, in the order added.
    const std::vector<PfDbObject*>& AllObjects() const { return m_order; }
    PfDbHandle NextHandle() const { return m_nextHandle; }

    // For the document reader: objects keep the handles they were saved with.
    Pfad::Error AddObjectWithHandle(PfDbObject* object, PfDbHandle handle);
    void SetNextHandle(PfDbHandle next);
    void SetModelSpace(PfDbObjContainer* modelSpace);
    void ReserveObjects(std::size_t count);

private:
    void adopt(PfDbObject* object, PfDbHandle handle);

    std::unordered_map<PfDbHandle, std::unique_ptr<PfDbObject>> m_objects;
    std::vector<PfDbObject*> m_order;
    PfDbHandle m_nextHandle = 1;
    PfDbObjContainer* m_modelSpace = nullptr;
    std::map<std::wstring, PfDbHandle> m_managers;
    std::vector<PfDbDatabaseReactor*> m_reactors;
    std::unique_ptr<PfDbTransactionManager> m_transactions;
};
