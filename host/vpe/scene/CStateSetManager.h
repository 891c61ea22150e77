#pragma once

#include "CStateSet.h"

#include <osg/ref_ptr>

#include <set>

namespace vpe {

// Hands out one shared state set per distinct set of settings, so that the
// many elements drawn alike share their state (and the renderer sorts them
// together). Shared state sets must not be changed: clone one first.
class CStateSetManager {
public:
    static CStateSetManager* GetInstance();

    // The shared state set equal to the given one (the given one itself when
    // it is the first of its kind).
    CStateSet* GetSharedStateSet(CStateSet* stateSet);
    std::size_t Size() const { return m_shared.size(); }
    void Clear() { m_shared.clear(); }

private:
    struct Less {
        bool operator()(const osg::ref_ptr<CStateSet>& a, const osg::ref_ptr<CStateSet>& b) const;
    };
    std::set<osg::ref_ptr<CStateSet>, Less> m_shared;
};

} // namespace vpe
