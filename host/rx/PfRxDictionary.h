#pragma once

#include "PfRxObject.h"

#include <string>
#include <unordered_map>
#include <vector>

// A dictionary of named run-time objects. It does not own its entries: whoever
// puts an object in takes it out again before deleting it.
class PfRxDictionary : public PfRxObject {
    PFRX_DECLARE_MEMBERS(PfRxDictionary)
public:
    PfRxObject* GetAt(const std::wstring& name) const;
    void PutAt(const std::wstring& name, PfRxObject* object);
    PfRxObject* Remove(const std::wstring& name);
    std::size_t Size() const { return m_entries.size(); }
    std::vector<std::wstring> Names() const;

private:
    std::unordered_map<std::wstring, PfRxObject*> m_entries;
};

// The process-wide system registry. It always holds "ClassDictionary" (the
// run-time classes) and "PFAD_REGISTERED_COMMANDS" (the command stack).
PfRxDictionary* PfRxSysRegistry();

extern const wchar_t* const kPfRxClassDictionaryName;
extern const wchar_t* const kPfRxRegisteredCommandsName;
