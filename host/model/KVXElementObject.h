#pragma once

#include "host/db/PfDbElement.h"
#include "host/vpe/CSceneNode.h"

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

    Pfad::Error Save(KVXSaveLoadXml& archive) override;
    Pfad::Error Load(KVXSaveLoadXml& archive) override;
};
