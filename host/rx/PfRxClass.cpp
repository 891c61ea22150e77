#include "PfRxClass.h"

#include "PfRxAbort.h"
#include "PfRxDictionary.h"

#include <memory>
#include <vector>

PFRX_DEFINE_HOST_MEMBERS(PfRxClass, PfRxObject, nullptr)

namespace {

PfRxDictionary* classDictionary()
{
    return static_cast<PfRxDictionary*>(PfRxSysRegistry()->GetAt(kPfRxClassDictionaryName));
}

} // namespace

PfRxClass::PfRxClass(std::wstring name, std::wstring parentName, PfRxFactory factory)
    : m_name(std::move(name)), m_parentName(std::move(parentName)), m_factory(factory)
{
}

PfRxObject* PfRxClass::Create() const { return m_factory ? m_factory() : nullptr; }

bool PfRxClass::IsDerivedFrom(const PfRxClass* other) const
{
    for (const PfRxClass* c = this; c; c = c->m_parent) {
        if (c == other)
            return true;
    }
    return false;
}

PfRxClass* PfRxLookupClass(const wchar_t* name)
{
    return static_cast<PfRxClass*>(classDictionary()->GetAt(name));
}

void PfRxInitClass(PfRxClass*& cache, const wchar_t* name, const wchar_t* parentName, PfRxFactory factory)
{
    if (cache) {
        PfRxClass* entry = PfRxLookupClass(name);
        if (entry == cache)
            return;
        if (entry)
            PfRxAbort("Class mismatch");
    }
    cache = NewPfRxClass(name, parentName, 0, factory, nullptr, nullptr);
}

void PfRxUninitClass(PfRxClass*& cache, const wchar_t* name)
{
    PfRxClass* cls = cache ? cache : PfRxLookupClass(name);
    // A cache that outlived its registration (a second unload) names a
    // retired descriptor: there is nothing left to delete.
    if (cls && cls == PfRxLookupClass(name))
        DeletePfRxClass(cls);
}

PfRxClass* NewPfRxClass(const wchar_t* name, const wchar_t* parentName, int, PfRxFactory factory, void*, void*)
{
    auto* cls = new PfRxClass(name, parentName ? parentName : L"", factory);
    if (!cls->ParentName().empty())
        cls->SetParent(PfRxLookupClass(cls->ParentName().c_str()));
    classDictionary()->PutAt(cls->Name(), cls);
    return cls;
}

void DeletePfRxClass(PfRxClass* cls)
{
    if (!cls)
        return;
    PfRxDictionary* dictionary = classDictionary();
    if (dictionary->GetAt(cls->Name()) == cls)
        dictionary->Remove(cls->Name());
    for (const std::wstring& name : dictionary->Names()) {
        auto* other = static_cast<PfRxClass*>(dictionary->GetAt(name));
        if (other->Parent() == cls)
            other->SetParent(nullptr);
    }
    // Classes keep their descriptor cached after unregistering, and objects
    // of an unloaded class may still ask for it: the descriptor is retired,
    // never freed, so those pointers stay valid (and match no registered
    // class). A few descriptors per module load is all it costs.
    cls->SetParent(nullptr);
    static std::vector<std::unique_ptr<PfRxClass>> retired;
    retired.emplace_back(cls);
}

void PfRxBuildClassHierarchy()
{
    PfRxDictionary* dictionary = classDictionary();
    for (const std::wstring& name : dictionary->Names()) {
        auto* cls = static_cast<PfRxClass*>(dictionary->GetAt(name));
        if (!cls->ParentName().empty())
            cls->SetParent(PfRxLookupClass(cls->ParentName().c_str()));
    }
}
