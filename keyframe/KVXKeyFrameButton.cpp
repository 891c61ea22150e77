#include "KVXKeyFrameButton.h"

#include "KVXCameraKeyFrame.h"
#include "KVXDateKeyFrame.h"

int KVXKeyFrameButton::Time() const
{
    if (cameraKeyFrame)
        return cameraKeyFrame->GetTime();
    return dateKeyFrame ? dateKeyFrame->GetTime() : 0;
}
