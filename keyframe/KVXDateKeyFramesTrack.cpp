#include "KVXDateKeyFramesTrack.h"

#include "host/rx/PfRxClass.h"

PFRX_DEFINE_MEMBERS(KVXDateKeyFramesTrack, KVXKeyFramesTrack, &PfRxCreateInstance<KVXDateKeyFramesTrack>)

const std::wstring KVXDateKeyFramesTrack::kContainerName = L"DATE_ANIMATION_KEY_FRAME_CONTAINER";

KVXDateKeyFrame* KVXDateKeyFramesTrack::CreateDateKeyFrame(int ms)
{
    return static_cast<KVXDateKeyFrame*>(CreateKeyFrame(ms));
}

KVXKeyFrame* KVXDateKeyFramesTrack::createKeyFrameImpl(int ms)
{
    return adopt(new KVXDateKeyFrame(static_cast<unsigned int>(ms)));
}

KVXDateKeyFramesTrack* KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(PfDbDatabase* database)
{
    auto make = []() -> KVXKeyFramesTrack* { return new KVXDateKeyFramesTrack(); };
    return KVXDateKeyFramesTrack::Cast(getOrCreateTrack(database, kContainerName, make));
}
