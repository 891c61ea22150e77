#pragma once

#include <QString>

#include <functional>
#include <vector>

namespace osg {
class Vec3d;
}

// Asks the user for a polyline picked in the drawing (a route to move an
// element along): the application lets the user click the points and
// finish or cancel; without an application nothing can be picked.
class PfEdPolylinePrompt {
public:
    // Answers false when the user cancelled; points are world points.
    using Picker = std::function<bool(const QString& prompt, std::vector<osg::Vec3d>& points)>;

    static void SetPicker(Picker picker);
    // False, points untouched, without a picker or when cancelled.
    static bool Pick(const QString& prompt, std::vector<osg::Vec3d>& points);
};
