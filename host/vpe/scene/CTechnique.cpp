#include "CTechnique.h"

namespace vpe {

void CTechnique::AddStateSet(CStateSet* stateSet)
{
    if (stateSet)
        m_passes.emplace_back(stateSet);
}

CStateSet* CTechnique::GetStateSet(unsigned int pass) const
{
    return pass < m_passes.size() ? m_passes[pass].get() : nullptr;
}

void CTechnique::RemoveStateSet(unsigned int pass)
{
    if (pass < m_passes.size())
        m_passes.erase(m_passes.begin() + pass);
}

} // namespace vpe
