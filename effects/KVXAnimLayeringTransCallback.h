#pragma once

#include "KVXAnimTransCallback.h"

// Builds or demolishes an element layer by layer: its elevation range is cut
// into layers of the record's layer height, worked through one after the
// other in equal shares of the record's days, and inside the current layer a
// vertical plane sweeps as in a plain cut. A second drawing of the element
// (the layer node) shows the current layer; the element's own node shows
// what lies below it.
class KVXAnimLayeringTransCallback : public KVXAnimTransCallback {
public:
    KVXAnimLayeringTransCallback(KVXAnimation* animation, KVXEffectContext* context);

    void operator()(vpe::CSceneNode* node, const vpe::CFrameTime& time) override;

    vpe::CSceneNode* GetLayerNode() const { return m_layerNode.get(); }
    // How many layers the element is built in (fewer than 2: no layers).
    int LayerCount() const;

protected:
    ~KVXAnimLayeringTransCallback() override;

private:
    // Takes every plane and cap of the layers away; true when any was there.
    bool showWholeLayer();
    // A construction not begun: nothing of the element shows, and no plane
    // grazes its bottom face. True when the scene changed.
    bool hideNotBegun();
    // The plain cut of the base class, with the layers put away.
    void playWithoutLayers(vpe::CSceneNode* node, const vpe::CFrameTime& time);
    // The layer under way (from 0; -1 or the count when outside) and how far
    // along it the frame is.
    static int layerAt(const Timing& when, int layers, float& layerFraction);
    // The planes above and below the layer: construction counts layers from
    // the bottom, demolition from the top; other kinds leave them as given.
    void layerBounds(int type, int layer, KVXAnimPlane& top, KVXAnimPlane& bottom) const;
    // Puts the three planes on the layer node, the bottom one (turned) on
    // the element's node, and caps them; true when anything moved.
    bool applyLayer(const KVXAnimPlane& sweep, const KVXAnimPlane& top, const KVXAnimPlane& bottom);

    vpe::CRefPtr<vpe::CSceneNode> m_layerNode;
    vpe::CRefPtr<vpe::CSceneNode> m_elementNode;
    double m_topElevation = 0.0;
    double m_bottomElevation = 0.0;
    KVXAppliedPlane m_layerPlanes[3];
    // What lies below the current layer, on the element's own node.
    KVXAppliedPlane m_belowPlane;
    KVXCutCap m_sweepCap;
    KVXCutCap m_topCap;
    KVXCutCap m_bottomCap;
};
