#pragma once

#include <osg/Quat>

namespace vpe {

class CQuaternion : public osg::Quat {
public:
    CQuaternion() = default;
    CQuaternion(const osg::Quat& q) : osg::Quat(q) {}
    CQuaternion(double x, double y, double z, double w) : osg::Quat(x, y, z, w) {}

    // Sets this rotation from a 3x3 rotation matrix given by rows: row i is
    // the image of local axis i (row-vector convention), so rows (s, d, u)
    // turn local X, Y, Z into s, d and u.
    void FromRotationMatrix(const double rows[3][3]);
};

} // namespace vpe
