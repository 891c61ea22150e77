#include "KVXAnimPlaneVisitor.h"

#include "host/vpe/scene/CEffect.h"
#include "host/vpe/scene/CStateSet.h"

KVXAnimPlaneVisitor::KVXAnimPlaneVisitor(const KVXAnimPlane* plane, bool remove, int index)
    : m_plane(plane), m_remove(remove), m_index(index)
{
}

namespace {

// The renderable's own state set, made a private CStateSet when it is shared
// or of another kind.
vpe::CStateSet* privateStateSet(vpe::CRenderable& renderable)
{
    osg::StateSet* current = renderable.getStateSet();
    auto* state = dynamic_cast<vpe::CStateSet*>(current);
    if (state && current->getNumParents() <= 1)
        return state;
    osg::ref_ptr<vpe::CStateSet> copy =
        state ? state->Clone()
              : (current ? new vpe::CStateSet(*current, osg::CopyOp::DEEP_COPY_STATEATTRIBUTES) : new vpe::CStateSet);
    renderable.setStateSet(copy.get());
    return copy.get();
}

} // namespace

void KVXAnimPlaneVisitor::VisitVisualNode(vpe::CVisualNode& node)
{
    if (!m_plane && !m_remove)
        return;
    const osg::Vec4d equation = m_plane ? m_plane->equation() : osg::Vec4d();
    for (unsigned int i = 0; i < node.getNumDrawables(); ++i) {
        vpe::CRenderable* renderable = node.getDrawable(i);
        vpe::CStateSet* own = m_remove ? dynamic_cast<vpe::CStateSet*>(renderable->getStateSet())
                                       : privateStateSet(*renderable);
        if (own)
            apply(*own, equation);
        vpe::CEffect* effect = vpe::CEffect::GetEffect(renderable);
        for (unsigned int t = 0; effect && t < effect->GetNumTechniques(); ++t) {
            vpe::CTechnique* technique = effect->GetTechnique(t);
            for (unsigned int pass = 0; pass < technique->GetNumStateSets(); ++pass) {
                if (technique->GetStateSet(pass) != own)
                    apply(*technique->GetStateSet(pass), equation);
            }
        }
    }
}

void KVXAnimPlaneVisitor::apply(vpe::CStateSet& stateSet, const osg::Vec4d& equation) const
{
    if (m_remove)
        stateSet.RemoveClipPlane(m_index);
    else
        stateSet.AddClipPlane(m_index, equation);
}
