#include "KVXAntiColorCallback.h"

#include "animation/KVXAnimation.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CRefGroupNode.h"
#include "host/vpe/scene/CRefVisualNode.h"
#include "host/vpe/scene/CStateSet.h"

KVXAntiColorCallback::KVXAntiColorCallback(vpe::CSceneNode* node, KVXAnimation* animation, KVXEffectContext* context)
    : m_node(node), m_animation(animation), m_context(context)
{
}

KVXAntiColorCallback::~KVXAntiColorCallback() = default;

vpe::CStateSet* KVXAntiColorCallback::CreateEmphasisStateSet()
{
    auto* state = new vpe::CStateSet;
    state->SetDiffuseColor(QColor(255, 0, 0, 100));
    state->SetAmbientColor(QColor(255, 0, 0, 180));
    state->SetSceneBlending(vpe::CStateSet::AlphaBlending);
    state->SetDepthTestEnabled(false);
    state->SetLightingEnabled(true);
    state->SetDrawingPriority(vpe::CStateSet::kTopDrawingPriority);
    state->SetDrawingMask(0xffffu);
    state->SetOverriding();
    return state;
}

void KVXAntiColorCallback::operator()(vpe::CSceneNode*, const vpe::CFrameTime& time)
{
    vpe::CViewer* viewer = m_context ? m_context->GetViewer() : nullptr;
    osg::Group* root = viewer ? viewer->GetScene()->GetRootNode() : nullptr;
    if (!root || !m_animation)
        return;
    const float start = m_context->TimeAt(m_animation->getStartDate());
    const float last =
        m_context->TimeAt(m_animation->getLoopPlayback() ? m_animation->getLoopEndDate() : m_animation->getEndDate());
    if (time.time < start || time.time > last)
        return;
    const int phase = m_frameCounter % kPeriodFrames;
    if (phase == 0)
        showOverlay(root);
    else if (phase == kShownFrames)
        removeOverlay(root);
    ++m_frameCounter;
    viewer->SetDirty();
}

void KVXAntiColorCallback::showOverlay(osg::Group* root)
{
    if (auto* visual = dynamic_cast<vpe::CVisualNode*>(m_node)) {
        removeOverlay(root);
        m_overlay = new vpe::CRefVisualNode(visual, false, false);
        m_overlay->setStateSet(CreateEmphasisStateSet());
    } else if (auto* group = dynamic_cast<vpe::CGroupNode*>(m_node)) {
        removeOverlay(root);
        // The overlay shares the group's children: its overriding state set
        // colours them there, and only there.
        m_overlay = new vpe::CRefGroupNode(group, false, false);
        m_overlay->setStateSet(CreateEmphasisStateSet());
    }
    if (m_overlay) {
        m_overlay->setName("kvx_emphasis_overlay");
        root->addChild(m_overlay.get());
    }
    m_animation->setAntiNode(m_overlay.get());
}

void KVXAntiColorCallback::removeOverlay(osg::Group* root)
{
    if (m_overlay)
        root->removeChild(m_overlay.get());
    m_overlay = nullptr;
    m_animation->setAntiNode(nullptr);
}
