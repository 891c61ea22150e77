#pragma once

#include "PfRxObject.h"

#include <string>

// Descriptor of a run-time class: its name, its parent (by name until
// PfRxBuildClassHierarchy or registration links it) and the factory that makes
// a default instance, which documents use to re-create objects by class name.
class PfRxClass : public PfRxObject {
    PFRX_DECLARE_MEMBERS(PfRxClass)
public:
    PfRxClass(std::wstring name, std::wstring parentName, PfRxFactory factory);

    const std::wstring& Name() const { return m_name; }
    const std::wstring& ParentName() const { return m_parentName; }
    PfRxClass* Parent() const { return m_parent; }
    void SetParent(PfRxClass* parent) { m_parent = parent; }

    // A new instance, or null for a class without factory (abstract classes).
    PfRxObject* Create() const;
    bool IsDerivedFrom(const PfRxClass* other) const;

private:
    std::wstring m_name;
    std::wstring m_parentName;
    PfRxClass* m_parent = nullptr;
    PfRxFactory m_factory;
};

// Creates a descriptor and enters it in "ClassDictionary"; the parent is
// linked at once when it is registered already. The last two arguments are
// reserved by the host interface and must be null.
PfRxClass* NewPfRxClass(const wchar_t* name, const wchar_t* parentName, int proxyFlags, PfRxFactory factory,
                        void* reserved1, void* reserved2);

// Removes the descriptor from "ClassDictionary" (when it is the one entered
// there) and retires it; classes derived from it lose their parent link.
void DeletePfRxClass(PfRxClass* cls);

// Links every registered class to its parent by name.
void PfRxBuildClassHierarchy();
