#pragma once

#include "KVXAnimPlane.h"

#include "host/vpe/CReferenced.h"
#include "host/vpe/CVisualNode.h"

#include <QColor>

#include <osg/BoundingBox>

#include <vector>

class PfDbElement;

namespace vpe {
class CBody;
class CPrimitiveRenderable;
class CStateSet;
} // namespace vpe

// The face that closes an element where a plane cuts it: the section of the
// element's first body, covered and drawn in the element's colour, never cut
// itself. The cap is made again only when the plane, the body or the colour
// changed; a plane that passes beside the body costs a box test.
class KVXCutCap {
public:
    KVXCutCap();
    ~KVXCutCap();

    // Brings the cap up to the plane: no cap when the element has no body or
    // the plane misses it. With bounds, only the part of the cap on the kept
    // side of every bound is drawn. True when the cap's renderables changed.
    bool Update(PfDbElement* element, const KVXAnimPlane& plane, const std::vector<KVXAnimPlane>& bounds = {});
    // No cap until the next update; true when there was one.
    bool Clear();
    void AddTo(vpe::CVisualNode& holder) const;
    // How many times a cap was made from the body (for the curious: tests and
    // benchmarks).
    int BuildCount() const { return m_builds; }

private:
    static vpe::CBody* bodyOf(PfDbElement* element);
    static QColor colourOf(const PfDbElement* element);
    bool misses(const KVXAnimPlane& plane) const;
    void build(const PfDbElement& element, const vpe::CBody& body, const KVXAnimPlane& plane);
    static void clipTriangles(std::vector<osg::Vec3f>& vertices, std::vector<osg::Vec3f>& normals,
                              const KVXAnimPlane& bound);
    static void clipSegments(std::vector<osg::Vec3f>& vertices, const KVXAnimPlane& bound);
    void makeStateSets(const PfDbElement& element, const QColor& colour);

    vpe::CRefPtr<vpe::CBody> m_body;
    osg::BoundingBoxd m_bodyBox;
    KVXAnimPlane m_plane;
    std::vector<KVXAnimPlane> m_bounds;
    bool m_planeValid = false;
    QColor m_colour;
    vpe::CRefPtr<vpe::CPrimitiveRenderable> m_faces;
    vpe::CRefPtr<vpe::CPrimitiveRenderable> m_edges;
    vpe::CRefPtr<vpe::CStateSet> m_faceState;
    vpe::CRefPtr<vpe::CStateSet> m_edgeState;
    int m_builds = 0;
};
