#pragma once

#include "CStateSet.h"
#include "host/vpe/core/CReferenced.h"

#include <vector>

namespace vpe {

// One way of drawing a renderable: its passes, each a state set the
// renderable is drawn with (in place of its own), in order.
class CTechnique : public CReferenced {
public:
    void AddStateSet(CStateSet* stateSet);
    unsigned int GetNumStateSets() const { return static_cast<unsigned int>(m_passes.size()); }
    // The state set of that pass; null past the last.
    CStateSet* GetStateSet(unsigned int pass = 0) const;
    void RemoveStateSet(unsigned int pass);

protected:
    ~CTechnique() override = default;

private:
    std::vector<CRefPtr<CStateSet>> m_passes;
};

} // namespace vpe
