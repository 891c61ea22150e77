#pragma once

#include "host/vpe/animation/CCameraAnimable.h"

// Puts the camera where the key-frame camera track says: the eye from the
// matrix's translation row, the view direction (local +Y) and the up
// direction (local +Z) from its columns.
class KVXCameraPlayAnimable : public vpe::CCameraAnimable {
public:
    explicit KVXCameraPlayAnimable(vpe::CCamera* camera) : vpe::CCameraAnimable(camera) {}

    void ApplyMatrix(const osg::Matrixf& matrix) override;
    // The camera stays where the last frame put it when playback stops.
    void Deactivate() override {}

protected:
    ~KVXCameraPlayAnimable() override = default;
};
