#pragma once

#include "PfDbObject.h"

#include <QColor>

// A database object that appears in the model: it can be hidden.
class PfDbEntity : public PfDbObject {
    PFRX_DECLARE_MEMBERS(PfDbEntity)
public:
    bool GetVisibility() const { return m_visible; }
    void SetVisibility(bool visible) { m_visible = visible; }

    // The colour the entity is drawn in; white unless the entity has one.
    virtual QColor EntityColor() const { return QColor(255, 255, 255); }

    // Depth offset of faces drawn over the entity's own (a cut cap over the
    // faces it closes), as glPolygonOffset takes it. Not saved: a display
    // setting of the session.
    float GetPolygonOffsetFactor() const { return m_polygonOffsetFactor; }
    float GetPolygonOffsetUnits() const { return m_polygonOffsetUnits; }
    void SetPolygonOffset(float factor, float units);

    Pfad::Error Save(KVXSaveLoadXml& archive) override;
    Pfad::Error Load(KVXSaveLoadXml& archive) override;

private:
    bool m_visible = true;
    float m_polygonOffsetFactor = -1.0f;
    float m_polygonOffsetUnits = -1.0f;
};
