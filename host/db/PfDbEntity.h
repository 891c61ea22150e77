#pragma once

#include "PfDbObject.h"

// A database object that appears in the model: it can be hidden.
class PfDbEntity : public PfDbObject {
    PFRX_DECLARE_MEMBERS(PfDbEntity)
public:
    bool GetVisibility() const { return m_visible; }
    void SetVisibility(bool visible) { m_visible = visible; }

    Pfad::Error Save(KVXSaveLoadXml& archive) override;
    Pfad::Error Load(KVXSaveLoadXml& archive) override;

private:
    bool m_visible = true;
};
