#include "PfViewNavigator.h"

#include "host/vpe/scene/CCamera.h"

#include <osg/Math>
#include <osg/Matrixd>

#include <algorithm>
#include <cmath>

namespace {

// Within about a degree of straight down or up the view loses its up.
constexpr double kSteepest = 0.9998;

osg::Vec3d position(const vpe::CCamera& camera) { return osg::Vec3d(camera.GetPosition()); }

osg::Vec3d direction(const vpe::CCamera& camera)
{
    osg::Vec3d d(camera.GetDirection());
    d.normalize();
    return d;
}

osg::Vec3d right(const vpe::CCamera& camera)
{
    osg::Vec3d r = direction(camera) ^ osg::Vec3d(camera.GetUpDirection());
    r.normalize();
    return r;
}

void place(vpe::CCamera& camera, const osg::Vec3d& eye, const osg::Vec3d& look, const osg::Vec3d& up)
{
    camera.SetPosition(osg::Vec3f(eye));
    camera.SetDirection(osg::Vec3f(look));
    camera.SetUpDirection(osg::Vec3f(up), true);
}

} // namespace

void PfViewNavigator::Orbit(vpe::CCamera& camera, const osg::Vec3d& pivot, double yawDegrees, double pitchDegrees)
{
    const osg::Vec3d z(0.0, 0.0, 1.0);
    osg::Matrixd turn = osg::Matrixd::rotate(osg::DegreesToRadians(pitchDegrees), right(camera));
    // A pitch that would reach or pass the vertical (the view's heading
    // turning round) is left out; the yaw still turns.
    const osg::Vec3d before = direction(camera);
    const osg::Vec3d after = before * turn;
    if (std::abs(after * z) > kSteepest || after.x() * before.x() + after.y() * before.y() <= 0.0)
        turn = osg::Matrixd::identity();
    turn = turn * osg::Matrixd::rotate(osg::DegreesToRadians(yawDegrees), z);
    const osg::Vec3d eye = pivot + (position(camera) - pivot) * turn;
    const osg::Vec3d look = direction(camera) * turn;
    osg::Vec3d up = osg::Vec3d(camera.GetUpDirection()) * turn;
    // Square to the view again, Z-up where it can be.
    const osg::Vec3d side = look ^ z;
    if (side.length2() > 1e-8)
        up = side ^ look;
    place(camera, eye, look, up);
}

double PfViewNavigator::PixelsPerUnit(const vpe::CCamera& camera, double distance, int pictureHeight)
{
    const double height = camera.GetProjectionType() == vpe::CCamera::Orthographic
                              ? double(camera.GetOrthoWindowHeight())
                              : 2.0 * std::max(distance, 1e-6) * std::tan(osg::DegreesToRadians(camera.GetFieldOfView()) / 2.0);
    return height > 0.0 ? pictureHeight / height : 0.0;
}

void PfViewNavigator::Pan(vpe::CCamera& camera, const osg::Vec3d& anchor, const QPointF& from, const QPointF& to,
                          const QSize& size)
{
    const double depth = (anchor - position(camera)) * direction(camera);
    const double scale = PixelsPerUnit(camera, depth, size.height());
    if (scale <= 0.0)
        return;
    osg::Vec3d up(camera.GetUpDirection());
    up.normalize();
    // The picture's y grows downwards.
    const osg::Vec3d shift = right(camera) * ((to.x() - from.x()) / scale) - up * ((to.y() - from.y()) / scale);
    camera.SetPosition(osg::Vec3f(position(camera) - shift));
}

void PfViewNavigator::Zoom(vpe::CCamera& camera, const osg::Vec3d& point, double factor)
{
    if (!(factor > 0.0))
        return;
    const osg::Vec3d eye = position(camera);
    const osg::Vec3d look = direction(camera);
    const osg::Vec3d toEye = eye - point;
    if (camera.GetProjectionType() == vpe::CCamera::Orthographic) {
        // The picture's scale changes; the eye slides sideways so that the
        // point stays where it is drawn.
        const osg::Vec3d across = toEye - look * (toEye * look);
        camera.SetOrthoWindowHeight(float(camera.GetOrthoWindowHeight() * factor));
        camera.SetPosition(osg::Vec3f(eye - across + across * factor));
        return;
    }
    const double distance = toEye.length();
    const double nearest = 2.0 * camera.GetNearDistance();
    if (distance <= 0.0)
        return;
    const double kept = std::max(distance * factor, std::min(distance, nearest));
    camera.SetPosition(osg::Vec3f(point + toEye * (kept / distance)));
}

void PfViewNavigator::SetProjection(vpe::CCamera& camera, int type, double focusDistance)
{
    if (camera.GetProjectionType() == type)
        return;
    const double halfAngle = osg::DegreesToRadians(camera.GetFieldOfView()) / 2.0;
    if (type == vpe::CCamera::Orthographic) {
        camera.SetOrthoWindowHeight(float(2.0 * focusDistance * std::tan(halfAngle)));
    } else {
        // The eye moves to where the perspective shows the focus as large
        // as the orthographic picture did.
        const osg::Vec3d focus = position(camera) + direction(camera) * focusDistance;
        const double distance = camera.GetOrthoWindowHeight() / (2.0 * std::tan(halfAngle));
        camera.SetPosition(osg::Vec3f(focus - direction(camera) * distance));
    }
    camera.SetProjectionType(type);
}
