#include "host/app/PfViewNavigator.h"
#include "host/vpe/scene/CCamera.h"

#include <gtest/gtest.h>

#include <osg/Matrixd>

namespace {

const QSize kPicture(800, 600);

QPointF pixelOf(const vpe::CCamera& camera, const osg::Vec3d& point)
{
    const osg::Vec3d clip =
        point * (camera.GetViewMatrix() * camera.GetProjectionMatrix(double(kPicture.width()) / kPicture.height()));
    return {(clip.x() + 1.0) / 2.0 * kPicture.width(), (1.0 - clip.y()) / 2.0 * kPicture.height()};
}

double distance(const QPointF& a, const QPointF& b) { return std::hypot(a.x() - b.x(), a.y() - b.y()); }

// A camera 50 m south-west of a site, looking down at it, in either
// projection.
vpe::CRefPtr<vpe::CCamera> siteCamera(int projection)
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    camera->SetLookAt({-30000, -30000, 25000}, {0, 0, 0});
    camera->SetProjectionType(projection);
    camera->SetOrthoWindowHeight(40000.0f);
    return camera;
}

class Navigator : public ::testing::TestWithParam<int> {};

TEST_P(Navigator, zoomKeepsThePointUnderTheCursor)
{
    vpe::CRefPtr<vpe::CCamera> camera = siteCamera(GetParam());
    const osg::Vec3d corner(12000, -5000, 3000);
    const QPointF before = pixelOf(*camera, corner);
    const QPointF elsewhere = pixelOf(*camera, {0, 0, 0});
    PfViewNavigator::Zoom(*camera, corner, 0.5);
    EXPECT_LT(distance(pixelOf(*camera, corner), before), 0.5);
    // Everything else moves away from the point: the picture grew.
    EXPECT_GT(distance(pixelOf(*camera, {0, 0, 0}), before), 1.5 * distance(elsewhere, before));
}

TEST_P(Navigator, panCarriesTheGrabbedPointWithTheCursor)
{
    vpe::CRefPtr<vpe::CCamera> camera = siteCamera(GetParam());
    const osg::Vec3d grabbed(5000, 2000, 0);
    const QPointF from = pixelOf(*camera, grabbed);
    const QPointF to = from + QPointF(-120, 45);
    PfViewNavigator::Pan(*camera, grabbed, from, to, kPicture);
    EXPECT_LT(distance(pixelOf(*camera, grabbed), to), 0.5);
}

TEST_P(Navigator, orbitTurnsAboutThePivotAndStopsAtTheVertical)
{
    vpe::CRefPtr<vpe::CCamera> camera = siteCamera(GetParam());
    const osg::Vec3d pivot(8000, 4000, 1500);
    const QPointF at = pixelOf(*camera, pivot);
    const double reach = (osg::Vec3d(camera->GetPosition()) - pivot).length();
    PfViewNavigator::Orbit(*camera, pivot, 70.0, 20.0);
    EXPECT_LT(distance(pixelOf(*camera, pivot), at), 0.5);
    EXPECT_NEAR((osg::Vec3d(camera->GetPosition()) - pivot).length(), reach, 1.0);
    EXPECT_GT(camera->GetUpDirection().z(), 0.0f) << "the world's Z stays up";

    // Far past straight down the pitch is left out, the yaw is not.
    const osg::Vec3f look = camera->GetDirection();
    PfViewNavigator::Orbit(*camera, pivot, 0.0, -170.0);
    EXPECT_LT((camera->GetDirection() - look).length(), 1e-4f);
    PfViewNavigator::Orbit(*camera, pivot, 90.0, -170.0);
    EXPECT_GT((camera->GetDirection() - look).length(), 0.5f);
}

INSTANTIATE_TEST_SUITE_P(Projections, Navigator,
                         ::testing::Values(int(vpe::CCamera::Perspective), int(vpe::CCamera::Orthographic)));

TEST(NavigatorProjection, switchingKeepsTheFocusAsLargeBothWays)
{
    vpe::CRefPtr<vpe::CCamera> camera = siteCamera(vpe::CCamera::Perspective);
    const osg::Vec3d eye(camera->GetPosition());
    const double focus = eye.length();
    // A point beside the focus, square to the view: its offset from the
    // centre of the picture is what the projection's scale shows.
    const osg::Vec3d side = osg::Vec3d(1, -1, 0) * (4000.0 / std::sqrt(2.0));
    const QPointF centre(kPicture.width() / 2.0, kPicture.height() / 2.0);
    const double offset = distance(pixelOf(*camera, side), centre);
    PfViewNavigator::SetProjection(*camera, vpe::CCamera::Orthographic, focus);
    EXPECT_NEAR(distance(pixelOf(*camera, side), centre), offset, 1.0);
    PfViewNavigator::Zoom(*camera, {0, 0, 0}, 0.5);
    PfViewNavigator::SetProjection(*camera, vpe::CCamera::Perspective, focus);
    EXPECT_NEAR(distance(pixelOf(*camera, side), centre), 2.0 * offset, 2.0) << "the zoom is kept";
    EXPECT_NEAR(osg::Vec3d(camera->GetPosition()).length(), focus / 2.0, 10.0);
}

TEST(NavigatorZoom, neverComesNearerThanTheNearPlane)
{
    vpe::CRefPtr<vpe::CCamera> camera = siteCamera(vpe::CCamera::Perspective);
    for (int i = 0; i < 100; ++i)
        PfViewNavigator::Zoom(*camera, {0, 0, 0}, 0.5);
    EXPECT_GE(osg::Vec3d(camera->GetPosition()).length(), camera->GetNearDistance());
    PfViewNavigator::Zoom(*camera, {0, 0, 0}, 4.0);
    EXPECT_GT(osg::Vec3d(camera->GetPosition()).length(), 3.0 * camera->GetNearDistance()) << "and comes out again";
}

} // namespace
