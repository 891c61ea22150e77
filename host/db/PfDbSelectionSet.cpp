#include "PfDbSelectionSet.h"

#include <algorithm>

bool PfDbSelectionSet::Add(PfDbHandle id)
{
    if (id == kPfDbNullHandle || Contains(id))
        return false;
    m_ids.push_back(id);
    return true;
}

bool PfDbSelectionSet::Remove(PfDbHandle id)
{
    auto it = std::find(m_ids.begin(), m_ids.end(), id);
    if (it == m_ids.end())
        return false;
    m_ids.erase(it);
    return true;
}

bool PfDbSelectionSet::Contains(PfDbHandle id) const { return std::find(m_ids.begin(), m_ids.end(), id) != m_ids.end(); }
