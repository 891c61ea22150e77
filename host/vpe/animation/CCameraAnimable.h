#pragma once

#include "CAnimable.h"
#include "host/vpe/scene/CCamera.h"

namespace vpe {

// Moves a camera. A camera track hands it a matrix with the eye in its
// translation row (elements 12 to 14, over element 15) and the camera's axes
// in its columns, as a view matrix has them: its view direction (local +Y)
// in column 1 and its up direction (local +Z) in column 2.
class CCameraAnimable : public CAnimable {
public:
    explicit CCameraAnimable(CCamera* camera) : m_camera(camera) {}

    CCamera* GetCamera() const { return m_camera.get(); }
    // While set, the view direction is left as it is (only the eye and up
    // move).
    void SetDirectionLocked(bool locked) { m_directionLocked = locked; }
    bool IsDirectionLocked() const { return m_directionLocked; }

    void ApplyMatrix(const osg::Matrixf& matrix) override;

protected:
    ~CCameraAnimable() override = default;

private:
    CRefPtr<CCamera> m_camera;
    bool m_directionLocked = false;
};

} // namespace vpe
