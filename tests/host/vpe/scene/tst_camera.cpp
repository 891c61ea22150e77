#include "host/vpe/core/CQuaternion.h"
#include "host/vpe/scene/CCamera.h"
#include "host/vpe/scene/CViewFraming.h"

#include <osg/Matrixd>

#include <gtest/gtest.h>

namespace {

void expectNear(const osg::Vec3d& actual, const osg::Vec3d& expected, double tolerance = 1e-9)
{
    EXPECT_NEAR((actual - expected).length(), 0.0, tolerance) << actual.x() << ' ' << actual.y() << ' ' << actual.z();
}

TEST(Camera, allParametersRoundTripInDoublePrecision)
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera();
    camera->SetAllParamsd(vpe::CCamera::Orthographic, {1.5, 2.5, 3.5}, {0, 1, 0}, {0, 0, 1}, 1.25, 10, 5e6, 60,
                          2400);
    int type = -1;
    vpe::CVec3<double> position, direction, up;
    double aspect, nearDistance, farDistance, fov, ortho;
    camera->GetAllParamsd(type, position, direction, up, aspect, nearDistance, farDistance, fov, ortho);
    EXPECT_EQ(type, vpe::CCamera::Orthographic);
    EXPECT_EQ(position, vpe::CVec3<double>(1.5, 2.5, 3.5));
    EXPECT_EQ(direction, vpe::CVec3<double>(0, 1, 0));
    EXPECT_EQ(up, vpe::CVec3<double>(0, 0, 1));
    EXPECT_EQ(aspect, 1.25);
    EXPECT_EQ(nearDistance, 10);
    EXPECT_EQ(farDistance, 5e6);
    EXPECT_EQ(fov, 60);
    EXPECT_EQ(ortho, 2400);
}

TEST(Camera, cloneIsIndependent)
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera();
    camera->SetPosition({1, 2, 3});
    vpe::CRefPtr<vpe::CCamera> clone = camera->Clone();
    clone->SetPosition({4, 5, 6});
    EXPECT_EQ(camera->GetPosition(), vpe::CVec3<float>(1, 2, 3));
    EXPECT_EQ(clone->GetPosition(), vpe::CVec3<float>(4, 5, 6));
}

TEST(Camera, viewMatrixLooksAlongTheDirection)
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera();
    camera->SetPosition({100, 0, 0});
    camera->SetDirection({-1, 0, 0});
    camera->SetUpDirection({0, 0, 1});
    // In eye space the camera looks down -Z: a point ahead lands on -Z.
    expectNear(osg::Vec3d(0, 0, 0) * camera->GetViewMatrix(), osg::Vec3d(0, 0, -100));
    expectNear(osg::Vec3d(100, 0, 50) * camera->GetViewMatrix(), osg::Vec3d(0, 50, 0));
}

TEST(Camera, lookAtKeepsTheWorldUpright)
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    camera->SetLookAt({0, -100, 100}, {0, 0, 0});
    const double h = std::sqrt(0.5);
    // The camera keeps single precision.
    expectNear(osg::Vec3d(camera->GetDirection()), osg::Vec3d(0, h, -h), 1e-6);
    expectNear(osg::Vec3d(camera->GetUpDirection()), osg::Vec3d(0, h, h), 1e-6);
    // Straight down there is no upright: +Y is up on the picture, also when
    // the eye is a hair off the vertical on either side.
    for (double offset : {0.0, 0.001, -0.001, 1.0, -1.0}) {
        camera->SetLookAt({5, 5 + offset, 100}, {5, 5, 0});
        expectNear(osg::Vec3d(camera->GetUpDirection()), osg::Vec3d(0, 1, 0), 0.02);
    }
    camera->SetLookAt({5, 5, 100}, {5, 5, 0});
    // Eye on the target: nothing to look at, nothing changes.
    camera->SetLookAt({1, 1, 1}, {1, 1, 1});
    expectNear(osg::Vec3d(camera->GetPosition()), osg::Vec3d(5, 5, 100));
}

TEST(ViewFraming, everyPresetFillsThePictureWithTheWholeModel)
{
    // A wide flat site with one tall thin tower at a corner.
    std::vector<osg::Vec3d> points;
    for (double x : {-80000.0, 90000.0})
        for (double y : {-50000.0, 60000.0})
            for (double z : {-400.0, 0.0})
                points.emplace_back(x, y, z);
    for (double x : {30000.0, 32000.0})
        for (double y : {10000.0, 12000.0})
            points.emplace_back(x, y, 70000.0);
    const double aspect = 16.0 / 9.0, fieldOfView = 45.0;
    for (const QString& preset : vpe::CViewFraming::PresetNames()) {
        SCOPED_TRACE(preset.toStdString());
        osg::Vec3d eye, target;
        ASSERT_TRUE(vpe::CViewFraming::Frame(points, preset, aspect, fieldOfView, eye, target));
        vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
        camera->SetLookAt(eye, target);
        const osg::Matrixd view = camera->GetViewMatrix();
        const osg::Matrixd projection = osg::Matrixd::perspective(fieldOfView, aspect, 1.0, 1e7);
        double reach[2] = {0.0, 0.0};
        for (const osg::Vec3d& point : points) {
            const osg::Vec3d onScreen = point * view * projection;
            EXPECT_LE(std::abs(onScreen.x()), 1.0);
            EXPECT_LE(std::abs(onScreen.y()), 1.0);
            reach[0] = std::max(reach[0], std::abs(onScreen.x()));
            reach[1] = std::max(reach[1], std::abs(onScreen.y()));
        }
        // Tight on one axis at least: no wasted sky or ground.
        EXPECT_GT(std::max(reach[0], reach[1]), 0.9);
    }
    osg::Vec3d eye, target;
    EXPECT_FALSE(vpe::CViewFraming::Frame(points, QStringLiteral("sideways"), aspect, fieldOfView, eye, target));
    EXPECT_FALSE(vpe::CViewFraming::Frame({}, QStringLiteral("top"), aspect, fieldOfView, eye, target));
}

TEST(Quaternion, rotationMatrixRowsAreTheImagesOfTheAxes)
{
    const double s = std::sqrt(0.5);
    const double cases[][3][3] = {
        {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
        {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
        {{s, -s, 0}, {s, s, 0}, {0, 0, 1}},
        {{1, 0, 0}, {0, 0, 1}, {0, -1, 0}},
        {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},
    };
    for (const auto& rows : cases) {
        vpe::CQuaternion q;
        q.FromRotationMatrix(rows);
        expectNear(q * osg::Vec3d(1, 0, 0), osg::Vec3d(rows[0][0], rows[0][1], rows[0][2]));
        expectNear(q * osg::Vec3d(0, 1, 0), osg::Vec3d(rows[1][0], rows[1][1], rows[1][2]));
        expectNear(q * osg::Vec3d(0, 0, 1), osg::Vec3d(rows[2][0], rows[2][1], rows[2][2]));
    }
}

} // namespace
