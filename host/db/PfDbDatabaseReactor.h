#pragma once

#include "host/rx/PfRxObject.h"

class PfDbDatabase;
class PfDbObject;

// Hears what happens to the objects of the databases it is attached to.
// objectErased is called once for every erase (erasing true) and every
// un-erase (erasing false), whether by a command, undo or redo.
class PfDbDatabaseReactor : public PfRxObject {
    PFRX_DECLARE_MEMBERS(PfDbDatabaseReactor)
public:
    virtual void objectAppended(const PfDbDatabase* database, const PfDbObject* object);
    virtual void objectErased(const PfDbDatabase* database, const PfDbObject* object, bool erasing);
    // An object was restored by undo, redo or an aborted transaction.
    virtual void objectModified(const PfDbDatabase* database, const PfDbObject* object);
    // The database is being destroyed; it forgets its reactors afterwards.
    virtual void goodbye(const PfDbDatabase* database);
};
