#include "PfDbObject.h"

#include "PfDbDatabase.h"
#include "PfDbTransactionManager.h"
#include "PfGsView.h"
#include "host/rx/PfRxClass.h"

PFRX_DEFINE_HOST_MEMBERS(PfDbObject, PfRxObject, nullptr)

// A copy is a new object: it belongs to no database until it is added.
PfDbObject::PfDbObject(const PfDbObject&) : PfRxObject() {}

Pfad::Error PfDbObject::Erase(bool erasing)
{
    if (!m_database)
        return Pfad::eNotApplicable;
    return m_database->EraseObject(this, erasing);
}

void PfDbObject::AssertWriteEnabled()
{
    if (m_database)
        m_database->TransactionManager()->ObjectTouched(this, false);
}

osg::Node* PfDbObject::GetSceneNode(const PfGsView* view) const
{
    return view && m_database ? view->GetSceneNode(m_handle) : nullptr;
}

Pfad::Error PfDbObject::Save(KVXSaveLoadXml&) { return Pfad::eOk; }

Pfad::Error PfDbObject::Load(KVXSaveLoadXml&) { return Pfad::eOk; }
