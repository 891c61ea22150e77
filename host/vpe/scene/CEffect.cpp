#include "CEffect.h"

#include <osgUtil/CullVisitor>

namespace vpe {

namespace {

// Draws the renderable once per pass of its effect's first technique, each
// time with the pass's state set where its own would be.
class EffectCullCallback : public osg::DrawableCullCallback {
public:
    explicit EffectCullCallback(CEffect* effect) : m_effect(effect) {}

    CEffect* effect() const { return m_effect.get(); }

    bool cull(osg::NodeVisitor* visitor, osg::Drawable* drawable, osg::RenderInfo*) const override
    {
        CTechnique* technique = m_effect->GetNumTechniques() > 0 ? m_effect->GetTechnique(0) : nullptr;
        auto* cull = dynamic_cast<osgUtil::CullVisitor*>(visitor);
        if (!technique || technique->GetNumStateSets() == 0 || !cull)
            return false;
        const osg::BoundingBox& box = drawable->getBoundingBox();
        if (drawable->isCullingActive() && cull->isCulled(box))
            return true;
        osg::RefMatrix& matrix = *cull->getModelViewMatrix();
        if (cull->getComputeNearFarMode() != osgUtil::CullVisitor::DO_NOT_COMPUTE_NEAR_FAR && box.valid() &&
            !cull->updateCalculatedNearFar(matrix, *drawable, false))
            return true;
        const float depth = box.valid() ? cull->getDistanceFromEyePoint(box.center(), false) : 0.0f;
        for (unsigned int pass = 0; pass < technique->GetNumStateSets(); ++pass) {
            cull->pushStateSet(technique->GetStateSet(pass));
            cull->addDrawableAndDepth(drawable, &matrix, depth);
            cull->popStateSet();
        }
        return true;
    }

private:
    CRefPtr<CEffect> m_effect;
};

} // namespace

void CEffect::AddTechnique(CTechnique* technique)
{
    if (technique)
        m_techniques.emplace_back(technique);
}

CTechnique* CEffect::GetTechnique(unsigned int index) const
{
    return index < m_techniques.size() ? m_techniques[index].get() : nullptr;
}

CEffect* CEffect::GetEffect(const osg::Drawable* renderable)
{
    if (!renderable)
        return nullptr;
    const auto* callback = dynamic_cast<const EffectCullCallback*>(renderable->getCullCallback());
    return callback ? callback->effect() : nullptr;
}

void CEffect::SetEffect(osg::Drawable* renderable, CEffect* effect)
{
    if (!renderable)
        return;
    renderable->setCullCallback(effect ? new EffectCullCallback(effect) : nullptr);
}

} // namespace vpe
