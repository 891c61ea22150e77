#include "CStateSetManager.h"

#include <iterator>

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
    const auto [first, last] = m_shared.equal_range(stateSet);
    // The newest of its kind is the one likely to have room.
    for (auto it = last; it != first;) {
        --it;
        if ((*it)->getNumParents() < kMostUsers)
            return it->get();
    }
    osg::ref_ptr<CStateSet> added = stateSet;
    if (first != last)
        added = new CStateSet(**std::prev(last), osg::CopyOp::SHALLOW_COPY);
    return m_shared.insert(last, added)->get();
}

} // namespace vpe
