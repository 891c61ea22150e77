#pragma once

#include "KVXCameraKeyFrame.h"
#include "KVXKeyFramesTrack.h"

#include <string>

class PfDbDatabase;

// The project's track of camera key frames, registered in the database under
// "CAMERA_ANIMATION_KEY_FRAME_CONTAINER".
class KVXCameraKeyFramesTrack : public KVXKeyFramesTrack {
    PFRX_DECLARE_MEMBERS(KVXCameraKeyFramesTrack)
public:
    static const std::wstring kContainerName;

    KVXCameraKeyFrame* CreateCameraKeyFrame(int ms);

    // The database's track, made and registered when it has none; null when
    // another kind of object holds the name (it is never replaced).
    static KVXCameraKeyFramesTrack* GetOrCteateKeyFrameContainer(PfDbDatabase* database);

protected:
    KVXKeyFrame* createKeyFrameImpl(int ms) override;
};
