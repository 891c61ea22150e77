#include "PfRxDictionary.h"

#include "PfEdCommandStack.h"

#include <memory>

PFRX_DEFINE_HOST_MEMBERS(PfRxDictionary, PfRxObject, &PfRxCreateInstance<PfRxDictionary>)

const wchar_t* const kPfRxClassDictionaryName = L"ClassDictionary";
const wchar_t* const kPfRxRegisteredCommandsName = L"PFAD_REGISTERED_COMMANDS";

PfRxObject* PfRxDictionary::GetAt(const std::wstring& name) const
{
    auto it = m_entries.find(name);
    return it == m_entries.end() ? nullptr : it->second;
}

void PfRxDictionary::PutAt(const std::wstring& name, PfRxObject* object) { m_entries[name] = object; }

PfRxObject* PfRxDictionary::Remove(const std::wstring& name)
{
    auto it = m_entries.find(name);
    if (it == m_entries.end())
        return nullptr;
    PfRxObject* object = it->second;
    m_entries.erase(it);
    return object;
}

std::vector<std::wstring> PfRxDictionary::Names() const
{
    std::vector<std::wstring> names;
    names.reserve(m_entries.size());
    for (const auto& entry : m_entries)
        names.push_back(entry.first);
    return names;
}

PfRxDictionary* PfRxSysRegistry()
{
    // Built in two steps: the class dictionary must exist before any Desc()
    // is asked, and the command stack's Desc() needs the class dictionary.
    static PfRxDictionary* registry = [] {
        static PfRxDictionary instance;
        static PfRxDictionary classes;
        instance.PutAt(kPfRxClassDictionaryName, &classes);
        return &instance;
    }();
    static bool commandsAdded = false;
    if (!commandsAdded) {
        commandsAdded = true;
        static PfEdCommandStack commands;
        registry->PutAt(kPfRxRegisteredCommandsName, &commands);
    }
    return registry;
}
