#include "CViewFraming.h"

#include <osg/ComputeBoundsVisitor>
#include <osg/Drawable>
#include <osg/Math>

#include <algorithm>
#include <cmath>

namespace vpe {

namespace {

struct Preset {
    const char* name;
    // From the target towards the eye.
    osg::Vec3d away;
};

const Preset kPresets[] = {
    {"overview", {-0.45, -0.9, 0.75}},
    {"south-west", {-1.0, -1.0, 0.9}},
    {"north-east", {1.0, 1.0, 0.9}},
    {"top", {0.0, 0.0, 1.0}},
    {"front", {0.0, -1.0, 0.18}},
};

// The picture's axes for a view along the direction: right and up, with the
// world's Z up, or north up when looking straight down.
void pictureAxes(const osg::Vec3d& direction, osg::Vec3d& right, osg::Vec3d& up)
{
    const osg::Vec3d worldUp = std::abs(direction.z()) > 0.9998 ? osg::Vec3d(0, 1, 0) : osg::Vec3d(0, 0, 1);
    right = direction ^ worldUp;
    right.normalize();
    up = right ^ direction;
}

// Gathers the corners of every drawable's box where the drawable stands.
class CornerVisitor : public osg::ComputeBoundsVisitor {
public:
    void apply(osg::Drawable& drawable) override
    {
        const osg::BoundingBox box = drawable.getBoundingBox();
        if (!box.valid())
            return;
        for (unsigned int i = 0; i < 8; ++i) {
            const osg::Vec3d corner(box.corner(i));
            corners.push_back(_matrixStack.empty() ? corner : corner * _matrixStack.back());
        }
    }
    std::vector<osg::Vec3d> corners;
};

} // namespace

std::vector<osg::Vec3d> CViewFraming::Corners(osg::Node* model)
{
    CornerVisitor visitor;
    if (model)
        model->accept(visitor);
    return visitor.corners;
}

QStringList CViewFraming::PresetNames()
{
    QStringList names;
    for (const Preset& preset : kPresets)
        names << QLatin1String(preset.name);
    return names;
}

bool CViewFraming::Frame(const std::vector<osg::Vec3d>& points, const QString& preset, double aspect,
                         double fieldOfView, osg::Vec3d& eye, osg::Vec3d& target)
{
    const Preset* chosen = nullptr;
    for (const Preset& each : kPresets)
        if (preset == QLatin1String(each.name))
            chosen = &each;
    if (!chosen || points.empty() || !(aspect > 0.0) || !(fieldOfView > 0.0 && fieldOfView < 180.0))
        return false;
    osg::Vec3d direction = -chosen->away;
    direction.normalize();
    osg::Vec3d right, up;
    pictureAxes(direction, right, up);
    const double tanUp = std::tan(osg::DegreesToRadians(fieldOfView) / 2.0);
    const double tanRight = tanUp * aspect;
    osg::BoundingBox box;
    for (const osg::Vec3d& point : points)
        box.expandBy(point);
    target = box.center();
    // The distance that fits every point about the target, then the target
    // moved to the middle of what the picture shows, which lets the points
    // come closer: twice, and the distance once more.
    double distance = 0.0;
    for (int pass = 0; pass < 3; ++pass) {
        distance = 0.0;
        for (const osg::Vec3d& point : points) {
            const osg::Vec3d offset = point - target;
            const double depth = offset * direction;
            distance = std::max({distance, std::abs(offset * right) / tanRight - depth,
                                 std::abs(offset * up) / tanUp - depth});
        }
        if (pass == 2)
            break;
        double low[2] = {1e300, 1e300}, high[2] = {-1e300, -1e300};
        for (const osg::Vec3d& point : points) {
            const osg::Vec3d offset = point - target;
            const double depth = std::max(distance + offset * direction, 1e-9);
            const double across[2] = {(offset * right) / depth, (offset * up) / depth};
            for (int axis = 0; axis < 2; ++axis) {
                low[axis] = std::min(low[axis], across[axis]);
                high[axis] = std::max(high[axis], across[axis]);
            }
        }
        // The middle of the outline, at the target's depth.
        target += right * ((low[0] + high[0]) / 2.0 * distance) + up * ((low[1] + high[1]) / 2.0 * distance);
    }
    // A small margin, so the model does not touch the picture's edges.
    distance *= 1.05;
    eye = target - direction * std::max(distance, 1.0);
    return true;
}

} // namespace vpe
