#pragma once

#include "KVXKeyFrame.h"
#include "host/vpe/core/CMatrix4.h"
#include "host/vpe/core/CQuaternion.h"
#include "host/vpe/scene/CCamera.h"

#include <string>

// Pins a whole camera (pose and projection) to a moment, with a thumbnail of
// the scene from that camera for the timeline. Copies share the camera.
//
// The thumbnail is taken once in the key frame's life: the first SetCamera
// fixes its file name, and later camera changes keep that image. A key frame
// loaded from a document keeps the stored path even if the file is gone.
class KVXCameraKeyFrame : public KVXKeyFrame {
    PFRX_DECLARE_MEMBERS(KVXCameraKeyFrame)
public:
    KVXCameraKeyFrame();
    explicit KVXCameraKeyFrame(unsigned int time);
    KVXCameraKeyFrame(const KVXCameraKeyFrame& other);
    ~KVXCameraKeyFrame() override;

    vpe::CCamera* GetCamera() const { return m_camera.get(); }
    // Takes a reference to the new camera, then takes the thumbnail if none
    // was taken yet.
    void SetCamera(vpe::CCamera* camera);
    // The camera's orientation: local X, Y, Z turned onto direction x up, the
    // direction and the up direction. Identity without a camera.
    vpe::CQuaternion GetCameraRotation() const;
    // Moves the eye by the matrix; the view direction and up stay as they are.
    virtual Pfad::Error Transform(const vpe::CMatrix4<double>& matrix);
    void UpdateSceneImage();
    std::wstring GetSceneImagePath() const { return m_sceneImagePath; }

    void getElementPropertys(KVXSaveLoadXml& xml) override;
    void setElementPropertys(KVXSaveLoadXml& xml) override;

private:
    void loadCameraData(KVXSaveLoadXml& xml);
    void saveCameraData(KVXSaveLoadXml& xml);

    vpe::CRefPtr<vpe::CCamera> m_camera;
    std::wstring m_sceneImagePath;
};
