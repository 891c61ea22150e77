#pragma once

#include "PfDbEntity.h"

#include <string>

namespace vpe {
class CBody;
}

// A named model element: what a planner picks and lists by name.
class PfDbElement : public PfDbEntity {
    PFRX_DECLARE_MEMBERS(PfDbElement)
public:
    const std::wstring& GetName() const { return m_name; }
    // A character no file can hold (a lone surrogate, NUL) becomes U+FFFD
    // here, so that the name saved is the name shown.
    void SetName(const std::wstring& name);

    // The element's first solid body; null for elements without bodies (or
    // whose bodies are not made yet).
    virtual vpe::CBody* GetFirstBody() const { return nullptr; }

    Pfad::Error Save(KVXSaveLoadXml& archive) override;
    Pfad::Error Load(KVXSaveLoadXml& archive) override;

private:
    std::wstring m_name;
};
