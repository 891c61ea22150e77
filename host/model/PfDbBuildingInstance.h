#pragma once

#include "host/db/PfDbElement.h"
#include "host/vpe/core/CVec3.h"

// A placed building: its name (from PfDbElement), insertion point and
// rotation about Z in degrees.
class PfDbBuildingInstance : public PfDbElement {
    PFRX_DECLARE_MEMBERS(PfDbBuildingInstance)
public:
    const vpe::CVec3<double>& GetPosition() const { return m_position; }
    void SetPosition(const vpe::CVec3<double>& position) { m_position = position; }
    double GetRotation() const { return m_rotation; }
    void SetRotation(double degrees) { m_rotation = degrees; }

    Pfad::Error Save(KVXSaveLoadXml& archive) override;
    Pfad::Error Load(KVXSaveLoadXml& archive) override;

private:
    vpe::CVec3<double> m_position{0.0, 0.0, 0.0};
    double m_rotation = 0.0;
};
