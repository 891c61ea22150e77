#pragma once

#include "CStateSet.h"

#include <osg/ref_ptr>

#include <set>

namespace vpe {

// Hands out shared state sets per distinct set of settings, so that the many
// elements drawn alike share their state (and the renderer sorts them
// together). A state set forgets a user by searching and shifting its list
// of users, so a set shared by tens of thousands of elements made closing a
// big model take seconds: one set serves at most kMostUsers, and the next
// of its kind is a shallow copy sharing its attributes, which the renderer
// switches to at almost no cost. Shared state sets must not be changed:
// clone one first.
class CStateSetManager {
public:
    static constexpr unsigned kMostUsers = 512;

    static CStateSetManager* GetInstance();

    // A shared state set equal to the given one with room for a user (the
    // given one itself when it is the first of its kind).
    CStateSet* GetSharedStateSet(CStateSet* stateSet);
    std::size_t Size() const { return m_shared.size(); }
    void Clear() { m_shared.clear(); }

private:
    struct Less {
        bool operator()(const osg::ref_ptr<CStateSet>& a, const osg::ref_ptr<CStateSet>& b) const;
    };
    std::multiset<osg::ref_ptr<CStateSet>, Less> m_shared;
};

} // namespace vpe
