#include "PfRxObject.h"

#include "PfRxClass.h"

PfRxClass* PfRxObject::gpDesc = nullptr;

PfRxClass* PfRxObject::Desc()
{
    if (!gpDesc)
        gpDesc = PfRxLookupClass(L"PfRxObject");
    if (!gpDesc)
        RxInit();
    return gpDesc;
}

PfRxClass* PfRxObject::IsA() const { return PfRxObject::Desc(); }

PfRxObject* PfRxObject::Cast(const PfRxObject* obj) { return const_cast<PfRxObject*>(obj); }

void PfRxObject::RxInit() { PfRxInitClass(gpDesc, L"PfRxObject", L"", &PfRxCreateInstance<PfRxObject>); }

void PfRxObject::RxUninit() { PfRxUninitClass(gpDesc, L"PfRxObject"); }

bool PfRxObject::IsKindOf(const PfRxClass* cls) const
{
    const PfRxClass* own = IsA();
    return own && cls && own->IsDerivedFrom(cls);
}

bool PfRxIsKindOf(const PfRxObject* obj, const PfRxClass* cls) { return obj && obj->IsKindOf(cls); }

Pfad::Error PfRxObject::CopyFrom(const PfRxObject* other) { return other ? Pfad::eNotApplicable : Pfad::eInvalidInput; }
