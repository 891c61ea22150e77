#include "KVXAnimLayeringTransCallback.h"

#include "KVXCloneStateSetVisitor.h"
#include "KVXNodeVisibility.h"

#include "animation/KVXAnimation.h"
#include "host/db/PfGsView.h"
#include "host/model/PfDbDrawingHelper.h"
#include "host/model/PfOptionContainer.h"
#include "host/vpe/render/CViewer.h"

#include <algorithm>
#include <cmath>

namespace {

// Clip planes of the layer node: the sweep, the layer's top, its bottom.
constexpr int kSweepPlane = 0;
constexpr int kTopPlane = 1;
constexpr int kBottomPlane = 2;

} // namespace

KVXAnimLayeringTransCallback::KVXAnimLayeringTransCallback(KVXAnimation* animation, KVXEffectContext* context)
    : KVXAnimTransCallback(animation, context)
{
    PfGsView* view = context ? context->GetView() : nullptr;
    PfDbElement* drawn = view ? element() : nullptr;
    vpe::CViewer* viewer = view ? context->GetViewer() : nullptr;
    if (!drawn || !viewer || !m_node)
        return;
    m_elementNode = m_node;
    const PfOptionContainer* options = PfOptionContainer::GetInstance();
    const PfDbDrawingHelper drawing(viewer->GetScene(), view, options->GetDistEpsilonCoefficient(),
                                    options->GetAngleEpsilonCoefficient());
    m_layerNode = drawing.Draw(drawn);
    if (!m_layerNode)
        return;
    KVXCloneStateSetVisitor privateStates;
    m_layerNode->accept(privateStates);
    m_layerNode->setName("kvx_layer_node");
    viewer->GetScene()->GetRootNode()->addChild(m_layerNode.get());
    m_topElevation = animation->getMaxmumElevation();
    m_bottomElevation = animation->getMinimumElevation();
}

KVXAnimLayeringTransCallback::~KVXAnimLayeringTransCallback()
{
    if (m_layerNode) {
        while (m_layerNode->getNumParents() > 0)
            m_layerNode->getParent(0)->removeChild(m_layerNode.get());
    }
}

int KVXAnimLayeringTransCallback::LayerCount() const
{
    const double height = m_animation ? m_animation->getLayerHeight() : 0.0;
    if (!(height > 0.0))
        return 0;
    const double layers = std::ceil((m_topElevation - m_bottomElevation) / height);
    return std::isfinite(layers) && layers < 1e6 ? static_cast<int>(layers) : 0;
}

bool KVXAnimLayeringTransCallback::showWholeLayer()
{
    bool changed = false;
    for (int index : {kSweepPlane, kTopPlane, kBottomPlane})
        changed = m_layerPlanes[index].Remove(m_layerNode.get(), index) || changed;
    changed = m_belowPlane.Remove(m_elementNode.get(), 0) || changed;
    for (KVXCutCap* cap : {&m_sweepCap, &m_topCap, &m_bottomCap})
        changed = cap->Clear() || changed;
    return changed;
}

bool KVXAnimLayeringTransCallback::hideNotBegun()
{
    KVXNodeVisibility::SetVisible(m_layerNode.get(), false);
    bool changed = false;
    for (int index : {kSweepPlane, kTopPlane, kBottomPlane})
        changed = m_layerPlanes[index].Remove(m_layerNode.get(), index) || changed;
    // Under the whole element, clear of its bottom face.
    const KVXAnimPlane below{{0, 0, m_box.zMin() - kPastTheEnd}, {0, 0, -1}};
    changed = m_belowPlane.Set(m_elementNode.get(), below, m_box, 0) || changed;
    for (KVXCutCap* cap : {&m_sweepCap, &m_topCap, &m_bottomCap})
        changed = cap->Clear() || changed;
    return changed;
}

void KVXAnimLayeringTransCallback::operator()(vpe::CSceneNode* node, const vpe::CFrameTime& time)
{
    if (!m_context || !m_context->GetViewer() || !m_node)
        return;
    const int layers = LayerCount();
    if (!m_layerNode || m_animation->getTranslationType() > KVXAnimation::BackToFront || layers < 2) {
        playWithoutLayers(node, time);
        return;
    }
    KVXNodeVisibility::SetVisible(m_layerNode.get(), true);
    m_elementPlane.Forget();
    const bool plainCap = m_cap.Clear();
    Timing when;
    if (!timing(time.time, when)) {
        showCaps({});
        return;
    }
    if (showsWhole(when)) {
        if (showWholeLayer() || plainCap) {
            showCaps({});
            m_context->MarkSceneChanged();
        }
        return;
    }
    const int type = m_animation->getAnimationType();
    if (type == KVXAnimation::Construction && !(when.elapsed > 0.0f)) {
        if (hideNotBegun() || plainCap) {
            showCaps({});
            m_context->MarkSceneChanged();
        }
        return;
    }
    const float direction = type == KVXAnimation::Construction ? -1.0f : 1.0f;
    float layerFraction = 0.0f;
    const int layer = layerAt(when, layers, layerFraction);
    // Within the layer the sweep is a plain cut's; only its place along the
    // sweep counts, so the other coordinates of its point do not matter.
    const KVXAnimPlane sweep = sweepPlane(layerFraction, when.nearEnd, direction);
    KVXAnimPlane top{{0, 0, 0}, {0, 0, 1}};
    KVXAnimPlane bottom{{0, 0, 0}, {0, 0, 1}};
    layerBounds(type, layer, top, bottom);
    if (applyLayer(sweep, top, bottom) || plainCap) {
        showCaps({&m_sweepCap, &m_topCap, &m_bottomCap});
        m_context->MarkSceneChanged();
    }
}

void KVXAnimLayeringTransCallback::playWithoutLayers(vpe::CSceneNode* node, const vpe::CFrameTime& time)
{
    KVXNodeVisibility::SetVisible(m_layerNode.get(), false);
    // The plain cut takes the element's node and the cap holder over.
    m_belowPlane.Forget();
    bool layerCaps = false;
    for (KVXCutCap* cap : {&m_sweepCap, &m_topCap, &m_bottomCap})
        layerCaps = cap->Clear() || layerCaps;
    if (layerCaps)
        m_elementPlane.Forget();
    KVXAnimTransCallback::operator()(node, time);
}

int KVXAnimLayeringTransCallback::layerAt(const Timing& when, int layers, float& layerFraction)
{
    const float layerDuration = when.duration / static_cast<float>(layers);
    // Counted in layers, truncated toward zero; a time far outside the
    // record (or a record of no duration) stays just outside the layers.
    float inLayers = when.elapsed / layerDuration;
    if (!std::isfinite(inLayers))
        inLayers = when.elapsed < 0.0f ? -1.0f : static_cast<float>(layers);
    inLayers = std::clamp(inLayers, -1.0f, static_cast<float>(layers));
    const auto layer = static_cast<int>(inLayers);
    layerFraction = inLayers - static_cast<float>(layer);
    return layer;
}

void KVXAnimLayeringTransCallback::layerBounds(int type, int layer, KVXAnimPlane& top, KVXAnimPlane& bottom) const
{
    const double h = m_animation->getLayerHeight();
    if (type == KVXAnimation::Construction) {
        top = {{0, 0, m_bottomElevation + (layer + 1) * h}, {0, 0, -1}};
        bottom = {{0, 0, m_bottomElevation + layer * h}, {0, 0, 1}};
    } else if (type == KVXAnimation::Demolition) {
        top = {{0, 0, m_topElevation - layer * h}, {0, 0, -1}};
        bottom = {{0, 0, m_topElevation - (layer + 1) * h}, {0, 0, 1}};
    }
}

bool KVXAnimLayeringTransCallback::applyLayer(const KVXAnimPlane& sweep, const KVXAnimPlane& top,
                                              const KVXAnimPlane& bottom)
{
    bool changed = m_layerPlanes[kSweepPlane].Set(m_layerNode.get(), sweep, m_box, kSweepPlane);
    changed = m_layerPlanes[kTopPlane].Set(m_layerNode.get(), top, m_box, kTopPlane) || changed;
    changed = m_layerPlanes[kBottomPlane].Set(m_layerNode.get(), bottom, m_box, kBottomPlane) || changed;
    changed = m_belowPlane.Set(m_elementNode.get(), {bottom.point, {0, 0, -1}}, m_box, 0) || changed;
    // Each cap only where the layer's solid ends: the sweep's face within
    // the layer, the layer's top over the swept part; the top of what lies
    // below is open wherever the layer is not built yet.
    PfDbElement* drawn = element();
    changed = m_sweepCap.Update(drawn, sweep, {top, bottom}) || changed;
    changed = m_topCap.Update(drawn, top, {sweep}) || changed;
    changed = m_bottomCap.Update(drawn, bottom) || changed;
    return changed;
}
