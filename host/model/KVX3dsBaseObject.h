#pragma once

#include "host/db/PfDbElement.h"
#include "host/vpe/core/CVec3.h"

#include <string>

// A mesh imported from a model file (a truck, a site office): the file it
// came from and where it is placed.
class KVX3dsBaseObject : public PfDbElement {
    PFRX_DECLARE_MEMBERS(KVX3dsBaseObject)
public:
    const std::wstring& GetSourcePath() const { return m_sourcePath; }
    void SetSourcePath(const std::wstring& path) { m_sourcePath = path; }
    const vpe::CVec3<double>& GetPosition() const { return m_position; }
    void SetPosition(const vpe::CVec3<double>& position) { m_position = position; }

    Pfad::Error Save(KVXSaveLoadXml& archive) override;
    Pfad::Error Load(KVXSaveLoadXml& archive) override;

private:
    std::wstring m_sourcePath;
    vpe::CVec3<double> m_position{0.0, 0.0, 0.0};
};
