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
    void SetName(const std::wstring& name) { m_name = name; }

    // The element's first solid body; null for elements without bodies (or
    // whose bodies are not made yet).
    virtual vpe::CBody* GetFirstBody() const { return nullptr; }

    Pfad::Error Save(KVXSaveLoadXml& archive) override;
    Pfad::Error Load(KVXSaveLoadXml& archive) override;

private:
    std::wstring m_name;
};
