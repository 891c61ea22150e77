#include "PfDbDatabaseReactor.h"

#include "host/rx/PfRxClass.h"

PFRX_DEFINE_HOST_MEMBERS(PfDbDatabaseReactor, PfRxObject, nullptr)

void PfDbDatabaseReactor::objectAppended(const PfDbDatabase*, const PfDbObject*) {}

void PfDbDatabaseReactor::objectErased(const PfDbDatabase*, const PfDbObject*, bool) {}

void PfDbDatabaseReactor::objectModified(const PfDbDatabase*, const PfDbObject*) {}

void PfDbDatabaseReactor::goodbye(const PfDbDatabase*) {}
