#pragma once

#include <osg/Vec3d>

#include <QString>
#include <QStringList>

#include <vector>

namespace osg {
class Node;
}

namespace vpe {

// Where to put a perspective camera so that a model fills the picture: seen
// from one of a few named sides, every corner of each of its parts' boxes in
// the frame and their outline centred, so that neither sky nor ground is
// wasted. Parts' boxes, not the model's: a tall crane on a wide site would
// otherwise make a box as tall as the crane over the whole site.
class CViewFraming {
public:
    // "overview" (from the south-south-west and well above, the default),
    // "south-west", "north-east", "top" (a plan, north up) and "front" (from
    // the south, almost level).
    static QStringList PresetNames();
    // The corners of the boxes of the model's drawables, in world
    // coordinates.
    static std::vector<osg::Vec3d> Corners(osg::Node* model);
    // The eye and the point it looks at, every point in the frame; false for
    // an unknown preset or no points. aspect: width over height;
    // fieldOfView: vertical, degrees.
    static bool Frame(const std::vector<osg::Vec3d>& points, const QString& preset, double aspect,
                      double fieldOfView, osg::Vec3d& eye, osg::Vec3d& target);
};

} // namespace vpe
