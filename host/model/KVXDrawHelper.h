#pragma once

#include "host/vpe/geometry/CBody.h"
#include "host/vpe/scene/CStateSet.h"

#include <QColor>

#include <osg/Node>
#include <osg/Vec3f>

#include <vector>

// How elements turn their data into scene nodes.
class KVXDrawHelper {
public:
    // Flat-shaded triangles (three vertices and three equal normals each) and
    // the edges worth drawing: the outline of faces whose neighbours turn by
    // more than featureAngle degrees, and any edge with a single face.
    static void TessellateShell(const vpe::CBody& shell, std::vector<osg::Vec3f>& triangleVertices,
                                std::vector<osg::Vec3f>& triangleNormals, std::vector<osg::Vec3f>& edgeVertices,
                                double featureAngle = 20.0);

    // One visual node for a body: its faces in the colour, its edges in a
    // darker shade; alpha below 255 draws it see-through. The state sets are
    // the shared ones for these settings.
    static osg::Node* CreateBodyNode(const vpe::CBody& body, const QColor& color);
    static vpe::CStateSet* FaceStateSet(const QColor& color);
    // The shade a body's edges are drawn in, alpha kept.
    static QColor EdgeColor(const QColor& color);
    static vpe::CStateSet* EdgeStateSet(const QColor& color);

    // Gives every renderable below the node the state set.
    static void SetNodeStateSet(osg::Node* node, osg::StateSet* stateSet);
};
