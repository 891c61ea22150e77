#pragma once

#include "PfDbHandle.h"

#include <vector>

// An ordered set of object ids (selection, highlight): each id once, in the
// order it was added.
class PfDbSelectionSet {
public:
    bool Add(PfDbHandle id);
    bool Remove(PfDbHandle id);
    bool Contains(PfDbHandle id) const;
    void Clear() { m_ids.clear(); }
    std::size_t Size() const { return m_ids.size(); }
    bool IsEmpty() const { return m_ids.empty(); }
    const std::vector<PfDbHandle>& Ids() const { return m_ids; }

private:
    std::vector<PfDbHandle> m_ids;
};
