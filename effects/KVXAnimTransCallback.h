#pragma once

#include "KVXAnimPlane.h"
#include "KVXAppliedPlane.h"
#include "KVXCutCap.h"
#include "KVXEffectContext.h"

#include "host/vpe/animation/CFrameCallback.h"
#include "host/vpe/scene/CVisualNode.h"

#include <osg/BoundingBox>
#include <osg/Group>
#include <osg/observer_ptr>

#include <initializer_list>

class KVXAnimation;
class PfDbElement;

// Builds or demolishes an element with a cutting plane that crosses it over
// the record's days: each frame the plane goes where the clock's date puts
// it, the element is clipped there and the cut is closed with a cap in the
// element's colour. The record's dates become times on the context's scale.
class KVXAnimTransCallback : public vpe::CFrameCallback {
public:
    KVXAnimTransCallback(KVXAnimation* animation, KVXEffectContext* context);

    void operator()(vpe::CSceneNode* node, const vpe::CFrameTime& time) override;
    // It holds the element's node itself.
    bool WantsNode() const override { return false; }

    // The node the caps are drawn in (a child of the scene root while it
    // holds a cap); null when the element could not be found.
    vpe::CVisualNode* GetCapNode() const { return m_capNode.get(); }
    vpe::CSceneNode* GetElementNode() const { return m_node.get(); }
    const KVXCutCap& GetCap() const { return m_cap; }

protected:
    ~KVXAnimTransCallback() override;

    // How far past an element's face a plane goes to show the element
    // whole or hide it whole: a plane on the face itself grazes it, and the
    // face flickers.
    static constexpr double kPastTheEnd = 2.0;

    // Where the frame's time falls in the record's days.
    struct Timing {
        float duration = 0.0f;
        float elapsed = 0.0f;
        bool nearEnd = false;
    };
    // False past the loop end of a looping record: the frame changes nothing.
    bool timing(float time, Timing& timing) const;
    // Elapsed over duration; a finite stand-in where that is infinite or
    // undefined (a record of no duration).
    static float fractionOf(const Timing& timing);
    // Not begun (demolition) or over (construction): the element shows whole.
    bool showsWhole(const Timing& timing) const;
    // The plane the record's direction gives for a fraction of its interval.
    KVXAnimPlane sweepPlane(float fraction, bool nearEnd, float direction) const;
    // The cap holder shows these caps (and nothing else).
    void showCaps(std::initializer_list<const KVXCutCap*> caps);
    PfDbElement* element() const;

    KVXAnimation* m_animation;
    vpe::CRefPtr<KVXEffectContext> m_context;
    vpe::CRefPtr<vpe::CSceneNode> m_node;
    vpe::CRefPtr<vpe::CVisualNode> m_capNode;
    osg::observer_ptr<osg::Group> m_sceneRoot;
    double m_centre[3] = {0.0, 0.0, 0.0};
    double m_size[3] = {0.0, 0.0, 0.0};
    osg::BoundingBox m_box;
    // The element's own plane (index: the record's kind) and its cap.
    KVXAppliedPlane m_elementPlane;
    KVXCutCap m_cap;

private:
    void takeExtents();
};
