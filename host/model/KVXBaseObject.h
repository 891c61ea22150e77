#pragma once

#include "KVXElementObject.h"
#include "host/vpe/core/CVec3.h"

#include <QColor>

#include <vector>

// A polyline element with colour (alpha included), line type and width: the
// base of the 3D elements and of the module's records, which draw as a
// polyline (a path animation's route, for instance).
class KVXBaseObject : public KVXElementObject {
    PFRX_DECLARE_MEMBERS(KVXBaseObject)
public:
    const QColor& GetColor() const { return m_color; }
    void SetColor(const QColor& color) { m_color = color; }
    QColor EntityColor() const override { return m_color; }
    int GetLineType() const { return m_lineType; }
    void SetLineType(int lineType) { m_lineType = lineType; }
    double GetLineWidth() const { return m_lineWidth; }
    void SetLineWidth(double width) { m_lineWidth = width; }
    bool IsClosed() const { return m_closed; }
    void SetClosed(bool closed) { m_closed = closed; }
    const std::vector<vpe::CVec3<double>>& GetPoints() const { return m_points; }
    void SetPoints(const std::vector<vpe::CVec3<double>>& points) { m_points = points; }
    std::size_t GetPointCount() const { return m_points.size(); }

    Pfad::Error CopyFrom(const PfRxObject* other) override;

    void getElementPropertys(KVXSaveLoadXml& xml) override;
    void setElementPropertys(KVXSaveLoadXml& xml) override;

    // The polyline in its colour; the plan flattens it onto Z = 0. Draws
    // nothing when hidden or with fewer than two points.
    bool draw2d(PfGiWorldDraw* draw, vpe::CSceneNode*& node) override;
    bool draw3d(PfGiWorldDraw* draw, vpe::CSceneNode*& node) override;

private:
    bool drawPolyline(bool flatten, vpe::CSceneNode*& node) const;

    QColor m_color{255, 255, 255, 255};
    int m_lineType = 0;
    double m_lineWidth = 1.0;
    bool m_closed = false;
    std::vector<vpe::CVec3<double>> m_points;
};
