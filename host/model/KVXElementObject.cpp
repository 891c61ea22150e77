#include "KVXElementObject.h"

#include "host/db/PfDbDatabase.h"
#include "host/rx/PfRxClass.h"

PFRX_DEFINE_HOST_MEMBERS(KVXElementObject, PfDbElement, &PfRxCreateInstance<KVXElementObject>)

void KVXElementObject::getElementPropertys(KVXSaveLoadXml&) {}

void KVXElementObject::setElementPropertys(KVXSaveLoadXml&) {}

void KVXElementObject::regenerate()
{
    if (GetDatabase())
        GetDatabase()->NotifyModified(this);
}

bool KVXElementObject::draw2d(PfGiWorldDraw*, vpe::CSceneNode*&) { return false; }

bool KVXElementObject::draw3d(PfGiWorldDraw*, vpe::CSceneNode*&) { return false; }

Pfad::Error KVXElementObject::Save(KVXSaveLoadXml& archive)
{
    PfDbElement::Save(archive);
    setElementPropertys(archive);
    return Pfad::eOk;
}

Pfad::Error KVXElementObject::Load(KVXSaveLoadXml& archive)
{
    PfDbElement::Load(archive);
    getElementPropertys(archive);
    return Pfad::eOk;
}
