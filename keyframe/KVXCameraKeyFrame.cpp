#include "KVXCameraKeyFrame.h"

#include "host/db/KVXSaveLoadXml.h"
#include "host/model/KVXGlobalInfo.h"
#include "host/model/PfGsUtility.h"
#include "host/rx/PfRxClass.h"
#include "host/vpe/render/CScreenshoter.h"
#include "host/vpe/render/CViewer.h"

#include <cmath>
#include <limits>

PFRX_DEFINE_MEMBERS(KVXCameraKeyFrame, KVXKeyFrame, &PfRxCreateInstance<KVXCameraKeyFrame>)

namespace {
const QString kTypeKey = QStringLiteral("KVXCameraKeyFrame::camera_type");
const QString kPositionKey = QStringLiteral("KVXCameraKeyFrame::camera_position");
const QString kDirectionKey = QStringLiteral("KVXCameraKeyFrame::camera_direction");
const QString kUpKey = QStringLiteral("KVXCameraKeyFrame::camera_up_direction");
const QString kAspectKey = QStringLiteral("KVXCameraKeyFrame::camera_aspect_ratio");
const QString kNearKey = QStringLiteral("KVXCameraKeyFrame::camera_near_dist");
const QString kFarKey = QStringLiteral("KVXCameraKeyFrame::camera_far_dist");
const QString kFieldOfViewKey = QStringLiteral("KVXCameraKeyFrame::camera_field_of_view");
const QString kOrthoHeightKey = QStringLiteral("KVXCameraKeyFrame::camera_ortho_window_height");
const QString kSceneImagePathKey = QStringLiteral("KVXCameraKeyFrame::scene_image_path_");
} // namespace

KVXCameraKeyFrame::KVXCameraKeyFrame() = default;

KVXCameraKeyFrame::KVXCameraKeyFrame(unsigned int time) : KVXKeyFrame(time) {}

KVXCameraKeyFrame::KVXCameraKeyFrame(const KVXCameraKeyFrame& other) = default;

KVXCameraKeyFrame::~KVXCameraKeyFrame()
{
    m_sceneImagePath.clear();
    m_camera = nullptr;
}

void KVXCameraKeyFrame::SetCamera(vpe::CCamera* camera)
{
    if (camera != m_camera.get())
        m_camera = camera;
    UpdateSceneImage();
}

vpe::CQuaternion KVXCameraKeyFrame::GetCameraRotation() const
{
    if (!m_camera)
        return vpe::CQuaternion();
    const vpe::CVec3<float>& d = m_camera->GetDirection();
    const vpe::CVec3<float>& u = m_camera->GetUpDirection();
    vpe::CVec3<float> s(d.y() * u.z() - d.z() * u.y(), d.z() * u.x() - d.x() * u.z(), d.x() * u.y() - d.y() * u.x());
    const float length = s.length();
    if (length > std::numeric_limits<float>::epsilon())
        s /= length;
    const double rows[3][3] = {{s.x(), s.y(), s.z()}, {d.x(), d.y(), d.z()}, {u.x(), u.y(), u.z()}};
    vpe::CQuaternion rotation;
    rotation.FromRotationMatrix(rows);
    return rotation;
}

Pfad::Error KVXCameraKeyFrame::Transform(const vpe::CMatrix4<double>& matrix)
{
    if (!m_camera)
        return Pfad::eOk;
    const vpe::CVec3<float>& p = m_camera->GetPosition();
    const double* m = matrix.ptr();
    const double x = p.x(), y = p.y(), z = p.z();
    const double w = x * m[3] + y * m[7] + z * m[11] + m[15];
    const vpe::CVec3<double> moved((x * m[0] + y * m[4] + z * m[8] + m[12]) / w,
                                   (x * m[1] + y * m[5] + z * m[9] + m[13]) / w,
                                   (x * m[2] + y * m[6] + z * m[10] + m[14]) / w);
    m_camera->SetPosition(vpe::CVec3<float>(moved));
    return Pfad::eOk;
}

void KVXCameraKeyFrame::UpdateSceneImage()
{
    if (!m_sceneImagePath.empty())
        return;
    const std::wstring directory = KVXGlobalInfo::getInstance()->getTempProjectPath();
    if (directory.empty())
        return;
    m_sceneImagePath = directory + L"//camera_key_frame_" +
                       std::to_wstring(static_cast<unsigned long long>(GetHandle())) + L".png";
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer || !m_camera)
        return;
    vpe::CScreenshoter screenshoter(viewer, true, 14);
    screenshoter.SetOffscreenBuffer(viewer->GetActiveViewportWidth() / 4, viewer->GetActiveViewportHeight() / 4);
    screenshoter.CreateOffScreenshot(nullptr, QString::fromStdWString(m_sceneImagePath), m_camera.get());
}

void KVXCameraKeyFrame::getElementPropertys(KVXSaveLoadXml& xml)
{
    KVXKeyFrame::getElementPropertys(xml);
    loadCameraData(xml);
    m_sceneImagePath = xml.getWString(kSceneImagePathKey);
}

void KVXCameraKeyFrame::setElementPropertys(KVXSaveLoadXml& xml)
{
    KVXKeyFrame::setElementPropertys(xml);
    saveCameraData(xml);
    xml.setWString(kSceneImagePathKey, m_sceneImagePath);
}

void KVXCameraKeyFrame::loadCameraData(KVXSaveLoadXml& xml)
{
    if (!m_camera)
        m_camera = new vpe::CCamera();
    const int type = xml.getInt(kTypeKey);
    const vpe::CVec3<double> position = xml.getVector(kPositionKey);
    const vpe::CVec3<double> direction = xml.getVector(kDirectionKey);
    const vpe::CVec3<double> up = xml.getVector(kUpKey);
    const double aspect = xml.getDouble(kAspectKey);
    const double nearDistance = xml.getDouble(kNearKey);
    const double farDistance = xml.getDouble(kFarKey);
    const double fieldOfView = xml.getDouble(kFieldOfViewKey);
    const double orthoHeight = xml.getDouble(kOrthoHeightKey);
    m_camera->SetAllParamsd(type, position, direction, up, aspect, nearDistance, farDistance, fieldOfView,
                            orthoHeight);
}

void KVXCameraKeyFrame::saveCameraData(KVXSaveLoadXml& xml)
{
    if (!m_camera)
        return;
    int type = 0;
    vpe::CVec3<double> position, direction, up;
    double aspect = 0.0, nearDistance = 0.0, farDistance = 0.0, fieldOfView = 0.0, orthoHeight = 0.0;
    m_camera->GetAllParamsd(type, position, direction, up, aspect, nearDistance, farDistance, fieldOfView,
                            orthoHeight);
    xml.setInt(kTypeKey, type);
    xml.setVector(kPositionKey, position);
    xml.setVector(kDirectionKey, direction);
    xml.setVector(kUpKey, up);
    xml.setDouble(kAspectKey, aspect);
    xml.setDouble(kNearKey, nearDistance);
    xml.setDouble(kFarKey, farDistance);
    xml.setDouble(kFieldOfViewKey, fieldOfView);
    xml.setDouble(kOrthoHeightKey, orthoHeight);
}
