#include "PfHostClasses.h"

#include "KVX3DElementObject.h"
#include "KVX3dsBaseObject.h"
#include "KVXTowerCraneObject.h"
#include "PfAutoSave.h"
#include "PfDbBuildingInstance.h"
#include "host/db/PfDbDatabaseReactor.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDbTransaction.h"
#include "host/db/PfDbTransactionReactor.h"
#include "host/rx/PfEdCommandStack.h"
#include "host/rx/PfRxClass.h"
#include "host/rx/PfRxDictionary.h"

void PfHostRegisterClasses()
{
    // Each Desc() registers its class and ancestors on first use.
    PfRxClass::Desc();
    PfRxDictionary::Desc();
    PfEdCommandStack::Desc();
    PfDbObjContainer::Desc();
    PfDbDatabaseReactor::Desc();
    PfDbTransactionReactor::Desc();
    PfDbTransaction::Desc();
    KVXTowerCraneObject::Desc();
    KVX3dsBaseObject::Desc();
    PfDbBuildingInstance::Desc();
    PfRxBuildClassHierarchy();
    PfAutoSave::AddCommands(PfEdCommandStack::Cast(PfRxSysRegistry()->GetAt(kPfRxRegisteredCommandsName)));
}
