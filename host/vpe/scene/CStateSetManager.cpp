#include "CStateSetManager.h"

namespace vpe {

bool CStateSetManager::Less::operator()(const osg::ref_ptr<CStateSet>& a, const osg::ref_ptr<CStateSet>& b) const
{
    if (a->GetDrawingMask() != b->GetDrawingMask())
        return a->GetDrawingMask() < b->GetDrawingMask();
    return a->compare(*b, true) < 0;
}

CStateSetManager* CStateSetManager::GetInstance()
{
    static CStateSetManager instance;
    return &instance;
}

CStateSet* CStateSetManager::GetSharedStateSet(CStateSet* stateSet)
{
    if (!stateSet)
        return nullptr;
    return m_shared.insert(stateSet).first->get();
}

} // namespace vpe
