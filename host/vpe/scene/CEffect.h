#pragma once

#include "CTechnique.h"
#include "host/vpe/core/CReferenced.h"

#include <osg/Drawable>

#include <vector>

namespace vpe {

// How a renderable is drawn when one pass with its own state set is not
// enough (an outline over the faces, a see-through pass): a list of
// techniques of which the first is used. A renderable whose effect has a
// technique with passes is drawn once per pass; otherwise as usual.
class CEffect : public CReferenced {
public:
    void AddTechnique(CTechnique* technique);
    unsigned int GetNumTechniques() const { return static_cast<unsigned int>(m_techniques.size()); }
    CTechnique* GetTechnique(unsigned int index) const;

    // The renderable's effect, null when it has none.
    static CEffect* GetEffect(const osg::Drawable* renderable);
    // Null takes the effect away.
    static void SetEffect(osg::Drawable* renderable, CEffect* effect);

protected:
    ~CEffect() override = default;

private:
    std::vector<CRefPtr<CTechnique>> m_techniques;
};

} // namespace vpe
