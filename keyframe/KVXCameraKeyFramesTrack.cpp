#include "KVXCameraKeyFramesTrack.h"

#include "host/rx/PfRxClass.h"

PFRX_DEFINE_MEMBERS(KVXCameraKeyFramesTrack, KVXKeyFramesTrack, &PfRxCreateInstance<KVXCameraKeyFramesTrack>)

const std::wstring KVXCameraKeyFramesTrack::kContainerName = L"CAMERA_ANIMATION_KEY_FRAME_CONTAINER";

KVXCameraKeyFrame* KVXCameraKeyFramesTrack::CreateCameraKeyFrame(int ms)
{
    return static_cast<KVXCameraKeyFrame*>(CreateKeyFrame(ms));
}

KVXKeyFrame* KVXCameraKeyFramesTrack::createKeyFrameImpl(int ms)
{
    return adopt(new KVXCameraKeyFrame(static_cast<unsigned int>(ms)));
}

KVXCameraKeyFramesTrack* KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(PfDbDatabase* database)
{
    auto make = []() -> KVXKeyFramesTrack* { return new KVXCameraKeyFramesTrack(); };
    return KVXCameraKeyFramesTrack::Cast(getOrCreateTrack(database, kContainerName, make));
}
