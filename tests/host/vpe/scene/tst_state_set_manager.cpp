#include "host/vpe/scene/CStateSetManager.h"

#include <osg/Geometry>

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

osg::ref_ptr<vpe::CStateSet> faces(const QColor& color)
{
    osg::ref_ptr<vpe::CStateSet> state = new vpe::CStateSet;
    state->SetDiffuseColor(color);
    return state;
}

// Elements drawn alike share a state set, but never so many that forgetting
// a user (searching and shifting the set's list of users) grows with the
// size of the model.
TEST(StateSetManager, sharesEqualSettingsInBoundedGroupsWithTheSameAttributes)
{
    vpe::CStateSetManager* manager = vpe::CStateSetManager::GetInstance();
    std::vector<osg::ref_ptr<osg::Geometry>> users;
    std::set<vpe::CStateSet*> handedOut;
    const unsigned elements = 3 * vpe::CStateSetManager::kMostUsers + 10;
    for (unsigned i = 0; i < elements; ++i) {
        vpe::CStateSet* shared = manager->GetSharedStateSet(faces(Qt::red).get());
        users.push_back(new osg::Geometry);
        users.back()->setStateSet(shared);
        handedOut.insert(shared);
    }
    EXPECT_EQ(handedOut.size(), 4u);
    const vpe::CStateSet* first = *handedOut.begin();
    for (const vpe::CStateSet* shared : handedOut) {
        EXPECT_LE(shared->getNumParents(), vpe::CStateSetManager::kMostUsers);
        EXPECT_EQ(shared->compare(*first, true), 0) << "all of one kind";
        EXPECT_EQ(shared->getAttributeList().begin()->second.first, first->getAttributeList().begin()->second.first)
            << "copies share the attributes themselves";
    }
    EXPECT_EQ(handedOut.count(manager->GetSharedStateSet(faces(Qt::blue).get())), 0u) << "another colour";

    // A set with room is handed out again rather than a new copy.
    users.erase(users.begin(), users.begin() + 20);
    EXPECT_EQ(handedOut.count(manager->GetSharedStateSet(faces(Qt::red).get())), 1u);
    manager->Clear();
}

} // namespace
