#include "CTimeSourceManager.h"

namespace vpe {

CTimeSourceManager* CTimeSourceManager::GetInstance()
{
    static CTimeSourceManager instance;
    return &instance;
}

CTimeSource* CTimeSourceManager::Find(const std::string& name) const
{
    auto it = m_sources.find(name);
    return it == m_sources.end() ? nullptr : it->second.get();
}

void CTimeSourceManager::Add(const std::string& name, CTimeSource* source)
{
    if (source)
        m_sources[name] = source;
}

} // namespace vpe
