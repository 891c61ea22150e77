#include "KVXAnimLayeringTransCallback.h"

#include "KVXAnimPlaneVisitor.h"
#include "KVXCloneStateSetVisitor.h"
#include "KVXNodeVisibility.h"

#include "animation/KVXAnimation.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/db/PfGsView.h"
#include "host/model/PfDbDrawingHelper.h"
#include "host/model/PfGsUtility.h"
#include "host/model/PfOptionContainer.h"
#include "host/vpe/CViewer.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kPastTheEnd = 2.0;

// Clip planes of the layer node: the sweep, the layer's top, its bottom.
constexpr int kSweepPlane = 0;
constexpr int kTopPlane = 1;
constexpr int kBottomPlane = 2;

void setPlane(osg::Node* node, const KVXAnimPlane& plane, int index)
{
    KVXAnimPlaneVisitor visitor(&plane, false, index);
    node->accept(visitor);
}

void removePlane(osg::Node* node, int index)
{
    KVXAnimPlaneVisitor visitor(nullptr, true, index);
    node->accept(visitor);
}

} // namespace

KVXAnimLayeringTransCallback::KVXAnimLayeringTransCallback(KVXAnimation* animation)
    : KVXAnimTransCallback(animation)
{
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    PfGsView* view = document ? document->GetActiveView() : nullptr;
    PfDbElement* drawn = view ? element() : nullptr;
    vpe::CViewer* viewer = view ? view->GetViewer() : nullptr;
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

void KVXAnimLayeringTransCallback::showWholeLayer()
{
    for (int index : {kSweepPlane, kTopPlane, kBottomPlane})
        removePlane(m_layerNode.get(), index);
    removePlane(m_elementNode.get(), 0);
}

void KVXAnimLayeringTransCallback::operator()(vpe::CSceneNode* node, const vpe::CFrameTime& time)
{
    if (!PfGsUtility::CurrentViewer() || !m_node)
        return;
    m_capNode->removeDrawables(0, m_capNode->getNumDrawables());
    const int layers = LayerCount();
    if (!m_layerNode || m_animation->getTranslationType() > KVXAnimation::BackToFront || layers < 2) {
        KVXNodeVisibility::SetVisible(m_layerNode.get(), false);
        KVXAnimTransCallback::operator()(node, time);
        return;
    }
    KVXNodeVisibility::SetVisible(m_layerNode.get(), true);
    Timing when;
    if (!timing(time.time, when))
        return;
    if (showsWhole(when)) {
        showWholeLayer();
        return;
    }
    const int type = m_animation->getAnimationType();
    const float direction = type == KVXAnimation::Construction ? -1.0f : 1.0f;
    const float layerDuration = when.duration / static_cast<float>(layers);
    // Counted in layers, truncated toward zero; a time far outside the
    // record (or a record of no duration) stays just outside the layers.
    float inLayers = when.elapsed / layerDuration;
    if (!std::isfinite(inLayers))
        inLayers = when.elapsed < 0.0f ? -1.0f : static_cast<float>(layers);
    inLayers = std::clamp(inLayers, -1.0f, static_cast<float>(layers));
    const auto layer = static_cast<int>(inLayers);
    const float layerFraction = inLayers - static_cast<float>(layer);

    const double cx = m_centre[0], cy = m_centre[1];
    const double sx = m_size[0], sy = m_size[1];
    const double f = layerFraction;
    KVXAnimPlane sweep;
    switch (m_animation->getTranslationType()) {
    case KVXAnimation::LeftToRight:
        sweep = {{when.nearEnd ? cx + sx / 2 + kPastTheEnd : cx - sx / 2 + sx * f, 0, 0}, {direction, 0, 0}};
        break;
    case KVXAnimation::RightToLeft:
        sweep = {{when.nearEnd ? cx - sx / 2 - kPastTheEnd : cx + sx / 2 - sx * f, 0, 0}, {-direction, 0, 0}};
        break;
    case KVXAnimation::FrontToBack:
        sweep = {{0, when.nearEnd ? cy + sy / 2 + kPastTheEnd : cy - sy / 2 + sy * f, 0}, {0, direction, 0}};
        break;
    default:
        sweep = {{0, when.nearEnd ? cy - sy / 2 - kPastTheEnd : cy + sy / 2 - sy * f, 0}, {0, -direction, 0}};
        break;
    }

    const double h = m_animation->getLayerHeight();
    KVXAnimPlane top{{0, 0, 0}, {0, 0, 1}};
    KVXAnimPlane bottom{{0, 0, 0}, {0, 0, 1}};
    if (type == KVXAnimation::Construction) {
        top = {{0, 0, m_bottomElevation + (layer + 1) * h}, {0, 0, -1}};
        bottom = {{0, 0, m_bottomElevation + layer * h}, {0, 0, 1}};
    } else if (type == KVXAnimation::Demolition) {
        top = {{0, 0, m_topElevation - layer * h}, {0, 0, -1}};
        bottom = {{0, 0, m_topElevation - (layer + 1) * h}, {0, 0, 1}};
    }
    setPlane(m_layerNode.get(), sweep, kSweepPlane);
    setPlane(m_layerNode.get(), top, kTopPlane);
    setPlane(m_layerNode.get(), bottom, kBottomPlane);
    setPlane(m_elementNode.get(), {bottom.point, {0, 0, -1}}, 0);

    // Each cap only where the layer's solid ends: the sweep's face within
    // the layer, the layer's top over the swept part; the top of what lies
    // below is open wherever the layer is not built yet.
    m_sweepCap.Draw(*m_capNode, element(), sweep, {top, bottom});
    m_topCap.Draw(*m_capNode, element(), top, {sweep});
    m_bottomCap.Draw(*m_capNode, element(), bottom);
    markSceneChanged();
}
