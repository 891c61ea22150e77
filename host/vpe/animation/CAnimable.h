#pragma once

#include "host/vpe/core/CReferenced.h"

#include <osg/Matrixf>

namespace vpe {

// Something a track moves that is not a scene node (a camera).
class CAnimable : public CReferenced {
public:
    virtual void ApplyMatrix(const osg::Matrixf& matrix) = 0;
    // Told when the animation starts and stops driving it.
    virtual void Activate() {}
    virtual void Deactivate() {}

protected:
    ~CAnimable() override = default;
};

} // namespace vpe
