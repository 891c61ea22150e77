#include "host/vpe/scene/CStateSet.h"

#include <osg/ClipPlane>

#include <gtest/gtest.h>

namespace {

// A sweeping cut sets its plane every frame; the plane is moved in place
// only where no other state set holds the same attribute.
TEST(StateSetClipPlanes, aPlaneMovesInPlaceUnlessAnotherSetSharesIt)
{
    osg::ref_ptr<vpe::CStateSet> own = new vpe::CStateSet;
    own->AddClipPlane(2, {0, 0, 1, -100});
    const osg::StateAttribute* first = own->getAttribute(osg::StateAttribute::CLIPPLANE, 2);
    own->AddClipPlane(2, {0, 0, 1, -200});
    EXPECT_EQ(own->getAttribute(osg::StateAttribute::CLIPPLANE, 2), first) << "moved where it is";
    EXPECT_EQ(own->GetClipPlane(2), osg::Vec4d(0, 0, 1, -200));
    EXPECT_EQ(own->getMode(GL_CLIP_PLANE2), osg::StateAttribute::ON);

    // A shallow copy shares the attribute: moving one must not move the other.
    osg::ref_ptr<vpe::CStateSet> copy = new vpe::CStateSet(*own, osg::CopyOp::SHALLOW_COPY);
    copy->AddClipPlane(2, {0, 0, 1, -300});
    EXPECT_EQ(own->GetClipPlane(2), osg::Vec4d(0, 0, 1, -200));
    EXPECT_EQ(copy->GetClipPlane(2), osg::Vec4d(0, 0, 1, -300));
    own->RemoveClipPlane(2);
    EXPECT_FALSE(own->HasClipPlane(2));
    EXPECT_TRUE(copy->HasClipPlane(2));
}

} // namespace
