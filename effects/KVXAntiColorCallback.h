#pragma once

#include "KVXEffectContext.h"

#include "host/vpe/animation/CFrameCallback.h"

class KVXAnimation;

namespace osg {
class Group;
}

namespace vpe {
class CStateSet;
}

// Makes an element blink in see-through red while its emphasis record is
// within its days: an overlay that shares the element's geometry is shown
// for 20 frames and taken away for 20, the element's own look untouched. The
// red shows through whatever stands in front of the element. It draws in
// the context's viewer, on the context's time scale.
class KVXAntiColorCallback : public vpe::CFrameCallback {
public:
    static constexpr int kPeriodFrames = 40;
    static constexpr int kShownFrames = 20;

    KVXAntiColorCallback(vpe::CSceneNode* node, KVXAnimation* animation, KVXEffectContext* context);

    void operator()(vpe::CSceneNode* node, const vpe::CFrameTime& time) override;

    vpe::CSceneNode* GetOverlay() const { return m_overlay.get(); }
    int GetFrameCounter() const { return m_frameCounter; }

    // The overlay's look: translucent red over everything.
    static vpe::CStateSet* CreateEmphasisStateSet();

protected:
    ~KVXAntiColorCallback() override;

private:
    void showOverlay(osg::Group* root);
    void removeOverlay(osg::Group* root);

    vpe::CSceneNode* m_node;
    KVXAnimation* m_animation;
    vpe::CRefPtr<KVXEffectContext> m_context;
    vpe::CRefPtr<vpe::CSceneNode> m_overlay;
    int m_frameCounter = 0;
};
