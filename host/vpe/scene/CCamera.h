#pragma once

#include "host/vpe/core/CMatrix4.h"
#include "host/vpe/core/CReferenced.h"
#include "host/vpe/core/CVec3.h"

namespace vpe {

// A camera as a set of parameters: projection, eye position, view direction,
// up direction and the projection's extent. Stored in single precision like
// the view it drives; the *d accessors read and write all of it at once in
// double precision, in the order the document keys use.
class CCamera : public CReferenced {
public:
    enum ProjectionType { Perspective = 0, Orthographic = 1 };

    CCamera() = default;
    CCamera(const CCamera& other);

    CCamera* Clone() const { return new CCamera(*this); }

    int GetProjectionType() const { return m_projectionType; }
    void SetProjectionType(int type) { m_projectionType = type; }
    const CVec3<float>& GetPosition() const { return m_position; }
    void SetPosition(const CVec3<float>& position) { m_position = position; }
    const CVec3<float>& GetDirection() const { return m_direction; }
    void SetDirection(const CVec3<float>& direction) { m_direction = direction; }
    const CVec3<float>& GetUpDirection() const { return m_up; }
    void SetUpDirection(const CVec3<float>& up) { m_up = up; }
    // With normalize set, stores the up direction at unit length.
    void SetUpDirection(const CVec3<float>& up, bool normalize);
    float GetAspectRatio() const { return m_aspectRatio; }
    void SetAspectRatio(float aspect) { m_aspectRatio = aspect; }
    float GetNearDistance() const { return m_near; }
    void SetNearDistance(float distance) { m_near = distance; }
    float GetFarDistance() const { return m_far; }
    void SetFarDistance(float distance) { m_far = distance; }
    float GetFieldOfView() const { return m_fieldOfView; }
    void SetFieldOfView(float degrees) { m_fieldOfView = degrees; }
    float GetOrthoWindowHeight() const { return m_orthoHeight; }
    void SetOrthoWindowHeight(float height) { m_orthoHeight = height; }

    void SetAllParamsd(int type, const CVec3<double>& position, const CVec3<double>& direction,
                       const CVec3<double>& up, double aspect, double nearDistance, double farDistance,
                       double fieldOfView, double orthoHeight);
    void GetAllParamsd(int& type, CVec3<double>& position, CVec3<double>& direction, CVec3<double>& up,
                       double& aspect, double& nearDistance, double& farDistance, double& fieldOfView,
                       double& orthoHeight) const;

    // Puts the eye there and turns the camera to the target, with up the
    // world's Z made square to the view (or north, +Y, when looking within
    // about a degree of straight down or up).
    void SetLookAt(const CVec3<double>& eye, const CVec3<double>& target);

    // Looks from the eye along the direction with the up direction, as a
    // view matrix in the row-vector convention.
    CMatrix4<double> GetViewMatrix() const;
    // The projection for a picture of that width over height.
    CMatrix4<double> GetProjectionMatrix(double aspect) const;

protected:
    ~CCamera() override = default;

private:
    int m_projectionType = Perspective;
    CVec3<float> m_position{0.0f, 0.0f, 0.0f};
    CVec3<float> m_direction{0.0f, 1.0f, 0.0f};
    CVec3<float> m_up{0.0f, 0.0f, 1.0f};
    float m_aspectRatio = 16.0f / 9.0f;
    float m_near = 100.0f;
    float m_far = 1.0e7f;
    float m_fieldOfView = 45.0f;
    float m_orthoHeight = 10000.0f;
};

} // namespace vpe
