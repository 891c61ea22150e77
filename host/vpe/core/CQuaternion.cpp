#include "CQuaternion.h"

#include <osg/Matrixd>

namespace vpe {

void CQuaternion::FromRotationMatrix(const double rows[3][3])
{
    const osg::Matrixd m(rows[0][0], rows[0][1], rows[0][2], 0.0, //
                         rows[1][0], rows[1][1], rows[1][2], 0.0, //
                         rows[2][0], rows[2][1], rows[2][2], 0.0, //
                         0.0, 0.0, 0.0, 1.0);
    set(m);
}

} // namespace vpe
