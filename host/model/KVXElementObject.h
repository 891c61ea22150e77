#pragma once

#include "host/db/PfDbElement.h"
#include "host/vpe/scene/CSceneNode.h"

#include <osg/Vec3f>

#include <vector>

class KVXSaveLoadXml;
class PfGiWorldDraw;

// Base of the application's own model elements. They persist through
// getElementPropertys (read from the archive) and setElementPropertys (write
// into it); an override first calls its base, then handles its own keys.
class KVXElementObject : public PfDbElement {
    PFRX_DECLARE_MEMBERS(KVXElementObject)
public:
    virtual void getElementPropertys(KVXSaveLoadXml& xml);
    virtual void setElementPropertys(KVXSaveLoadXml& xml);

    // Builds the element's scene node for the plan or the model view. False
    // (and node left alone) when the element draws nothing.
    virtual bool draw2d(PfGiWorldDraw* draw, vpe::CSceneNode*& node);
    virtual bool draw3d(PfGiWorldDraw* draw, vpe::CSceneNode*& node);

    // Builds the element's derived data again and has its views draw it anew.
    virtual void regenerate();

    // Flat-shaded triangles and feature edges of a shell drawn for the
    // element (a cut cap); the coefficients are the host options' (see
    // PfOptionContainer).
    virtual void tessellateShell(const vpe::CBody& shell, double distEpsilonCoefficient,
                                 double angleEpsilonCoefficient, std::vector<osg::Vec3f>& triangleVertices,
                                 std::vector<osg::Vec3f>& triangleNormals, std::vector<osg::Vec3f>& edgeVertices) const;

    Pfad::Error Save(KVXSaveLoadXml& archive) override;
    Pfad::Error Load(KVXSaveLoadXml& archive) override;
};
