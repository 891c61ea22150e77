#pragma once

#include "KVXBaseObject.h"
#include "host/vpe/geometry/CBody.h"

#include <vector>

// A solid element of the model (a wall, a storey, a shed): closed triangle
// mesh bodies in millimetres with their own colour and a transparency in
// percent (0 opaque, 100 invisible). It draws one visual node per body, or
// its polyline while it has no body.
class KVX3DElementObject : public KVXBaseObject {
    PFRX_DECLARE_MEMBERS(KVX3DElementObject)
public:
    // Farther from the origin than any site, in millimetres (a thousand
    // kilometres): a body with a point beyond is not read, since one such
    // point spoils the whole picture's depth range.
    static constexpr double kFarthest = 1.0e9;

    using Bodies = std::vector<vpe::CRefPtr<vpe::CBody>>;

    const Bodies& GetBodies() const { return m_bodies; }
    vpe::CBody* GetFirstBody() const override { return m_bodies.empty() ? nullptr : m_bodies.front().get(); }
    void SetBodies(const Bodies& bodies) { m_bodies = bodies; }
    void AddBody(vpe::CBody* body);
    // The body colour with the transparency as alpha.
    QColor GetDrawColor() const;
    // With bodies, the colour their edges are drawn in; without, the
    // polyline's own colour.
    QColor EntityColor() const override;

    const QColor& GetBodyColor() const { return m_bodyColor; }
    void SetBodyColor(const QColor& color) { m_bodyColor = color; }
    int GetTransparency() const { return m_transparency; }
    // Clamped to 0..100.
    void SetTransparency(int percent);

    Pfad::Error CopyFrom(const PfRxObject* other) override;

    void getElementPropertys(KVXSaveLoadXml& xml) override;
    void setElementPropertys(KVXSaveLoadXml& xml) override;
    bool draw3d(PfGiWorldDraw* draw, vpe::CSceneNode*& node) override;

private:
    QColor m_bodyColor{200, 200, 200};
    int m_transparency = 0;
    Bodies m_bodies;
};
