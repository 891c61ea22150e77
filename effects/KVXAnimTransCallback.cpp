#include "KVXAnimTransCallback.h"

#include "KVXAnimPlaneVisitor.h"

#include "animation/KVXAnimation.h"
#include "host/db/PfDbElement.h"
#include "host/db/PfGsView.h"
#include "host/vpe/render/CViewer.h"

#include <osg/ComputeBoundsVisitor>

#include <cmath>

namespace {

// How far past the far face the plane goes on the last frame, so that the
// element shows whole.

} // namespace

KVXAnimTransCallback::KVXAnimTransCallback(KVXAnimation* animation, KVXEffectContext* context)
    : m_animation(animation), m_context(context)
{
    PfGsView* view = context ? context->GetView() : nullptr;
    vpe::CViewer* viewer = view ? context->GetViewer() : nullptr;
    if (!viewer || !animation)
        return;
    const auto objId = static_cast<PfDbHandle>(animation->getObjId());
    if (!context->GetItem(objId))
        return;
    m_node = view->GetSceneNode(objId);
    if (!m_node)
        return;
    takeExtents();
    m_capNode = new vpe::CVisualNode;
    m_capNode->setName("kvx_cut_caps");
    m_sceneRoot = viewer->GetScene()->GetRootNode();
}

KVXAnimTransCallback::~KVXAnimTransCallback()
{
    // The caps leave with the callback: a stopped schedule leaves no trace.
    if (m_capNode) {
        while (m_capNode->getNumParents() > 0)
            m_capNode->getParent(0)->removeChild(m_capNode.get());
    }
}

void KVXAnimTransCallback::takeExtents()
{
    osg::ComputeBoundsVisitor bounds;
    m_node->accept(bounds);
    const osg::BoundingBox& box = bounds.getBoundingBox();
    for (int axis = 0; axis < 3; ++axis) {
        if (!(box._max[axis] + 1e-12 >= box._min[axis]))
            return;
    }
    m_box = box;
    for (int axis = 0; axis < 3; ++axis) {
        m_centre[axis] = (static_cast<double>(box._min[axis]) + box._max[axis]) * 0.5;
        m_size[axis] = static_cast<double>(box._max[axis]) - box._min[axis];
    }
}

PfDbElement* KVXAnimTransCallback::element() const
{
    return PfDbElement::Cast(m_context->GetItem(static_cast<PfDbHandle>(m_animation->getObjId())));
}

bool KVXAnimTransCallback::timing(float time, Timing& timing) const
{
    const float start = m_context->TimeAt(m_animation->getStartDate());
    const float end = m_context->TimeAt(m_animation->getEndDate());
    timing.duration = end - start;
    timing.elapsed = time - start;
    if (m_animation->getLoopPlayback()) {
        if (m_context->TimeAt(m_animation->getLoopEndDate()) < time)
            return false;
        // A zero duration would never wrap: it stays where it is.
        while (timing.duration > 0.0f && timing.duration < timing.elapsed)
            timing.elapsed -= timing.duration;
    }
    timing.nearEnd = std::fabs(timing.elapsed - timing.duration) < 0.1f;
    return true;
}

float KVXAnimTransCallback::fractionOf(const Timing& timing)
{
    const float fraction = timing.elapsed / timing.duration;
    if (std::isfinite(fraction))
        return fraction;
    // A record of no duration: far before or far past the element, never a
    // plane at infinity for the renderer (on the last frame the plane is put
    // past the far face anyway).
    constexpr float kFarAway = 1000.0f;
    return timing.elapsed < 0.0f ? -kFarAway : kFarAway;
}

bool KVXAnimTransCallback::showsWhole(const Timing& timing) const
{
    const int type = m_animation->getAnimationType();
    return (timing.elapsed < 0.0f && type == KVXAnimation::Demolition) ||
           (timing.elapsed > timing.duration && type == KVXAnimation::Construction);
}

KVXAnimPlane KVXAnimTransCallback::sweepPlane(float fraction, bool nearEnd, float direction) const
{
    const double cx = m_centre[0], cy = m_centre[1], cz = m_centre[2];
    const double sx = m_size[0], sy = m_size[1];
    const double startZ = m_animation->getAnimStartPoint().z();
    const double dz = std::fabs(m_animation->getAnimEndPoint().z() - startZ);
    // How far the plane has travelled from the face the sweep starts at. At
    // the end it stands past the far face, and at the first instant (or
    // before) clear of the near one: a plane on a face leaves that face to
    // the renderer's rounding.
    const bool atStart = !nearEnd && !(fraction > 0.0f);
    const auto along = [&](double extent) {
        return nearEnd ? extent + kPastTheEnd : atStart ? -kPastTheEnd : extent * fraction;
    };
    switch (m_animation->getTranslationType()) {
    case KVXAnimation::LeftToRight: return {{cx - sx / 2 + along(sx), cy, cz}, {direction, 0, 0}};
    case KVXAnimation::RightToLeft: return {{cx + sx / 2 - along(sx), cy, cz}, {-direction, 0, 0}};
    case KVXAnimation::FrontToBack: return {{cx, cy - sy / 2 + along(sy), cz}, {0, direction, 0}};
    case KVXAnimation::BackToFront: return {{cx, cy + sy / 2 - along(sy), cz}, {0, -direction, 0}};
    case KVXAnimation::BottomUp: return {{cx, cy, startZ + along(dz)}, {0, 0, direction}};
    case KVXAnimation::TopDown: return {{cx, cy, startZ - along(dz)}, {0, 0, -direction}};
    default: return {{0, 0, 0}, {0, 0, 1}};
    }
}

void KVXAnimTransCallback::operator()(vpe::CSceneNode*, const vpe::CFrameTime& time)
{
    if (!m_node)
        return;
    Timing when;
    if (!timing(time.time, when)) {
        // Past the loop end the element keeps its last state, without a cap.
        if (m_cap.Clear())
            showCaps({});
        return;
    }
    const int type = m_animation->getAnimationType();
    bool changed = false;
    if (showsWhole(when)) {
        changed = m_elementPlane.Remove(m_node.get(), type);
        changed = m_cap.Clear() || changed;
    } else {
        const float direction = type == KVXAnimation::Construction ? -1.0f : 1.0f;
        const KVXAnimPlane plane = sweepPlane(fractionOf(when), when.nearEnd, direction);
        changed = m_elementPlane.Set(m_node.get(), plane, m_box, type);
        // A plane beside the element has no cap to show; one that stands
        // still has its cap already.
        if (!m_elementPlane.Cuts())
            changed = m_cap.Clear() || changed;
        else if (!m_cap.IsAt(plane))
            changed = m_cap.Update(element(), plane) || changed;
    }
    // A frame that moves nothing leaves the scene (and its shadows) alone.
    if (!changed)
        return;
    showCaps({&m_cap});
    m_context->MarkSceneChanged();
}

void KVXAnimTransCallback::showCaps(std::initializer_list<const KVXCutCap*> caps)
{
    std::vector<osg::Drawable*> wantedDrawables;
    for (const KVXCutCap* cap : caps)
        cap->AppendTo(wantedDrawables);
    // A moved cap keeps its renderables: only the holder's bound changes.
    // Taking them out and putting them back every frame cost about 2 ms a
    // playing frame with thousands of cuts.
    bool same = wantedDrawables.size() == m_capNode->getNumDrawables();
    for (unsigned int i = 0; same && i < m_capNode->getNumDrawables(); ++i)
        same = m_capNode->getDrawable(i) == wantedDrawables[i];
    if (same) {
        m_capNode->dirtyBound();
    } else {
        m_capNode->removeDrawables(0, m_capNode->getNumDrawables());
        for (osg::Drawable* drawable : wantedDrawables)
            m_capNode->addDrawable(drawable);
    }
    // The holder stands in the scene only while it holds a cap: most records
    // of a long schedule are not under way, and a scene root with thousands
    // of empty holders is slow to take them from again.
    const bool inScene = m_capNode->getNumParents() > 0;
    const bool wanted = m_capNode->getNumDrawables() > 0;
    osg::ref_ptr<osg::Group> root;
    if (wanted && !inScene && m_sceneRoot.lock(root))
        root->addChild(m_capNode.get());
    else if (!wanted && inScene)
        m_capNode->getParent(0)->removeChild(m_capNode.get());
}
