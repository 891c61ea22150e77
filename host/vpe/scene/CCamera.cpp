#include "CCamera.h"

#include <cmath>

namespace vpe {

CCamera::CCamera(const CCamera& other)
    : CReferenced(),
      m_projectionType(other.m_projectionType),
      m_position(other.m_position),
      m_direction(other.m_direction),
      m_up(other.m_up),
      m_aspectRatio(other.m_aspectRatio),
      m_near(other.m_near),
      m_far(other.m_far),
      m_fieldOfView(other.m_fieldOfView),
      m_orthoHeight(other.m_orthoHeight)
{
}

void CCamera::SetAllParamsd(int type, const CVec3<double>& position, const CVec3<double>& direction,
                            const CVec3<double>& up, double aspect, double nearDistance, double farDistance,
                            double fieldOfView, double orthoHeight)
{
    m_projectionType = type;
    m_position = CVec3<float>(position);
    m_direction = CVec3<float>(direction);
    m_up = CVec3<float>(up);
    m_aspectRatio = static_cast<float>(aspect);
    m_near = static_cast<float>(nearDistance);
    m_far = static_cast<float>(farDistance);
    m_fieldOfView = static_cast<float>(fieldOfView);
    m_orthoHeight = static_cast<float>(orthoHeight);
}

void CCamera::GetAllParamsd(int& type, CVec3<double>& position, CVec3<double>& direction, CVec3<double>& up,
                            double& aspect, double& nearDistance, double& farDistance, double& fieldOfView,
                            double& orthoHeight) const
{
    type = m_projectionType;
    position = CVec3<double>(m_position);
    direction = CVec3<double>(m_direction);
    up = CVec3<double>(m_up);
    aspect = m_aspectRatio;
    nearDistance = m_near;
    farDistance = m_far;
    fieldOfView = m_fieldOfView;
    orthoHeight = m_orthoHeight;
}

void CCamera::SetUpDirection(const CVec3<float>& up, bool normalize)
{
    m_up = up;
    if (normalize && m_up.length2() > 0.0f)
        m_up.normalize();
}

void CCamera::SetLookAt(const CVec3<double>& eye, const CVec3<double>& target)
{
    CVec3<double> direction = target - eye;
    if (direction.normalize() <= 0.0)
        return;
    // Within about a degree of straight down (or up) the world's Z says
    // little about which way is up and flips as the eye crosses the target:
    // such views are drawn as a plan, north up.
    const bool plan = std::abs(direction.z()) > 0.9998;
    CVec3<double> up = (direction ^ CVec3<double>(0.0, plan ? 1.0 : 0.0, plan ? 0.0 : 1.0)) ^ direction;
    up.normalize();
    m_position = CVec3<float>(eye);
    m_direction = CVec3<float>(direction);
    m_up = CVec3<float>(up);
}

CMatrix4<double> CCamera::GetViewMatrix() const
{
    const CVec3<double> eye(m_position);
    return CMatrix4<double>::lookAt(eye, eye + CVec3<double>(m_direction), CVec3<double>(m_up));
}

CMatrix4<double> CCamera::GetProjectionMatrix(double aspect) const
{
    if (m_projectionType == Orthographic) {
        const double half = m_orthoHeight * 0.5;
        return CMatrix4<double>::ortho(-half * aspect, half * aspect, -half, half, m_near, m_far);
    }
    return CMatrix4<double>::perspective(m_fieldOfView, aspect, m_near, m_far);
}

} // namespace vpe
