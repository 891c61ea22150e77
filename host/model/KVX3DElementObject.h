#pragma once

#include "KVXBaseObject.h"

// A solid element of the model (a wall, a storey, a shed): its body has its
// own colour and a transparency in percent (0 opaque, 100 invisible).
class KVX3DElementObject : public KVXBaseObject {
    PFRX_DECLARE_MEMBERS(KVX3DElementObject)
public:
    const QColor& GetBodyColor() const { return m_bodyColor; }
    void SetBodyColor(const QColor& color) { m_bodyColor = color; }
    int GetTransparency() const { return m_transparency; }
    // Clamped to 0..100.
    void SetTransparency(int percent);

    Pfad::Error CopyFrom(const PfRxObject* other) override;

    void getElementPropertys(KVXSaveLoadXml& xml) override;
    void setElementPropertys(KVXSaveLoadXml& xml) override;

private:
    QColor m_bodyColor{200, 200, 200};
    int m_transparency = 0;
};
