#pragma once

#include "KVXDateKeyFrame.h"
#include "KVXKeyFramesTrack.h"

#include <string>

class PfDbDatabase;

// The project's track of date key frames, registered in the database under
// "DATE_ANIMATION_KEY_FRAME_CONTAINER".
class KVXDateKeyFramesTrack : public KVXKeyFramesTrack {
    PFRX_DECLARE_MEMBERS(KVXDateKeyFramesTrack)
public:
    static const std::wstring kContainerName;

    KVXDateKeyFrame* CreateDateKeyFrame(int ms);

    // The database's track, made and registered when it has none; null when
    // another kind of object holds the name (it is never replaced).
    static KVXDateKeyFramesTrack* GetOrCteateKeyFrameContainer(PfDbDatabase* database);

protected:
    KVXKeyFrame* createKeyFrameImpl(int ms) override;
};
