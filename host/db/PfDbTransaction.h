#pragma once

#include "KVXSaveLoadXml.h"
#include "PfDbHandle.h"
#include "host/rx/PfRxObject.h"
#include "host/rx/PfadError.h"

#include <QString>

#include <unordered_map>
#include <vector>

class PfDbDatabase;
class PfDbObject;

// One transaction: for every object it touched, the object's state before
// (absent for a new object) and after. A state is the object's erase flag and
// its properties as its Save wrote them; undo loads the states before, redo
// the states after. The states after are taken when the step is first
// undone, not when it ends: the objects stand as the step left them then
// (every later step is undone already), and a step that is never undone
// (most of them; an import of tens of thousands of records) never pays for
// a second copy of everything it made.
class PfDbTransaction : public PfRxObject {
    PFRX_DECLARE_MEMBERS(PfDbTransaction)
public:
    enum EntryKind { kNew, kChanged };

    explicit PfDbTransaction(PfDbDatabase* database = nullptr);

    // Records an object the caller made or is about to change. An object that
    // is recorded already keeps its first state.
    Pfad::Error AddObject(PfDbObject* object, EntryKind kind);

    PfDbDatabase* GetDatabase() const { return m_database; }
    std::vector<PfDbHandle> GetObjectIds() const;
    // The touched objects, erased ones included.
    std::vector<PfDbObject*> GetObjects() const;
    bool IsEmpty() const { return m_entries.empty(); }
    bool Touched(PfDbHandle handle) const { return m_index.count(handle) != 0; }
    // What the user did, as the Edit menu names the step ("添加关键帧").
    const QString& GetName() const { return m_name; }
    void SetName(const QString& name) { m_name = name; }

private:
    friend class PfDbTransactionManager;

    struct State {
        bool exists = false;
        bool erased = false;
        KVXSaveLoadXml properties;
    };
    struct Entry {
        PfDbHandle handle = kPfDbNullHandle;
        State before;
        State after;
    };

    void record(PfDbObject* object, bool isNew);
    // Moves this (inner) transaction's entries into the outer one, keeping
    // the outer one's earlier states.
    void mergeInto(PfDbTransaction& outer);
    void captureAfter();
    // Takes the states after if they are not yet taken, then replays the
    // states before.
    void undo();
    // Replays the states before (abort) or after (redo).
    void restore(bool before);

    PfDbDatabase* m_database;
    QString m_name;
    std::vector<Entry> m_entries;
    bool m_afterCaptured = false;
    std::unordered_map<PfDbHandle, std::size_t> m_index;
};
