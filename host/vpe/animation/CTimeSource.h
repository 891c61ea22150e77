#pragma once

#include "host/vpe/core/CReferenced.h"

namespace vpe {

// Where a viewer's clock takes the length of each frame from.
class CTimeSource : public CReferenced {
public:
    // The seconds to advance for the frame about to be drawn.
    virtual double NextElapsed() = 0;
    virtual void Reset() = 0;

protected:
    ~CTimeSource() override = default;
};

} // namespace vpe
