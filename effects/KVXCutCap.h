#pragma once

#include "KVXAnimPlane.h"
#include "KVXCapGeometry.h"

#include "host/vpe/core/CReferenced.h"
#include "host/vpe/scene/CVisualNode.h"

#include <QColor>

#include <osg/BoundingBox>

#include <vector>

class PfDbElement;

namespace vpe {
class CBody;
class CBodySlicer;
class CStateSet;
} // namespace vpe

// The face that closes an element where a plane cuts it: the section of the
// element's first body, covered and drawn in the element's colour, never cut
// itself. Nothing is done while the plane, the body and the colour stay as
// they are; a plane that slides without passing a vertex of the body moves
// the cap's points; a plane beside the body costs a box test.
class KVXCutCap {
public:
    KVXCutCap();
    ~KVXCutCap();

    // Brings the cap up to the plane: no cap when the element has no body or
    // the plane misses it. With bounds, only the part of the cap on the kept
    // side of every bound is drawn. True when the cap's renderables changed.
    bool Update(PfDbElement* element, const KVXAnimPlane& plane, const std::vector<KVXAnimPlane>& bounds = {});
    // Whether the cap stands for this plane already (nothing to update).
    bool IsAt(const KVXAnimPlane& plane, const std::vector<KVXAnimPlane>& bounds = {}) const
    {
        return m_planeValid && plane == m_plane && bounds == m_bounds;
    }
    // No cap until the next update; true when there was one.
    bool Clear();
    // Its renderables, faces first, after those already in the list.
    void AppendTo(std::vector<osg::Drawable*>& drawables) const;
    // How many times the cap was made anew, and how many times it was moved
    // (for tests and benchmarks).
    int BuildCount() const { return m_builds; }
    int MoveCount() const { return m_moves; }

private:
    static vpe::CBody* bodyOf(PfDbElement* element);
    static QColor colourOf(const PfDbElement* element);
    bool misses(const KVXAnimPlane& plane) const;
    bool hasCap() const { return m_geometry.Faces() || m_geometry.Edges(); }
    void build(const PfDbElement& element, const vpe::CBody& body, const KVXAnimPlane& plane);
    void makeStateSets(const PfDbElement& element, const QColor& colour);

    vpe::CRefPtr<vpe::CBody> m_body;
    osg::BoundingBoxd m_bodyBox;
    vpe::CRefPtr<vpe::CBodySlicer> m_slicer;
    KVXAnimPlane m_plane;
    std::vector<KVXAnimPlane> m_bounds;
    bool m_planeValid = false;
    QColor m_colour;
    KVXCapGeometry m_geometry;
    // The points of the last sliding section (kept to spare allocations).
    std::vector<osg::Vec3f> m_points;
    vpe::CRefPtr<vpe::CStateSet> m_faceState;
    vpe::CRefPtr<vpe::CStateSet> m_edgeState;
    int m_builds = 0;
    int m_moves = 0;
};
