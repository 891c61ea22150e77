#include "KVXCloneStateSetVisitor.h"

#include "host/vpe/scene/CEffect.h"
#include "host/vpe/scene/CStateSet.h"

void KVXCloneStateSetVisitor::VisitVisualNode(vpe::CVisualNode& node)
{
    for (unsigned int i = 0; i < node.getNumDrawables(); ++i) {
        vpe::CRenderable* renderable = node.getDrawable(i);
        if (osg::StateSet* state = renderable->getStateSet()) {
            auto* own = dynamic_cast<vpe::CStateSet*>(state);
            renderable->setStateSet(own ? own->Clone()
                                        : new vpe::CStateSet(*state, osg::CopyOp::DEEP_COPY_STATEATTRIBUTES));
        }
        vpe::CEffect* effect = vpe::CEffect::GetEffect(renderable);
        if (effect && effect->GetNumTechniques() > 0 && renderable->getStateSet())
            effect->GetTechnique(0)->AddStateSet(static_cast<vpe::CStateSet*>(renderable->getStateSet()));
    }
}
