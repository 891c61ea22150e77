#include "KVXKeyFramesTrack.h"

#include "KVXKeyFrame.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/rx/PfRxClass.h"

#include <algorithm>

PFRX_DEFINE_MEMBERS(KVXKeyFramesTrack, PfDbObjContainer, &PfRxCreateInstance<KVXKeyFramesTrack>)

namespace {
PfDbDocument* currentDocument()
{
    PfDocManager* manager = PfDocManagerPtr();
    return manager ? manager->CurrentDocument() : nullptr;
}
} // namespace

KVXKeyFrame* KVXKeyFramesTrack::CreateKeyFrame(int ms)
{
    if (!currentDocument())
        return nullptr;
    return createKeyFrameImpl(ms);
}

KVXKeyFrame* KVXKeyFramesTrack::createKeyFrameImpl(int) { return nullptr; }

KVXKeyFrame* KVXKeyFramesTrack::adopt(KVXKeyFrame* keyFrame)
{
    if (Add(keyFrame) != Pfad::eOk) {
        if (!keyFrame->GetDatabase())
            delete keyFrame;
        return nullptr;
    }
    return keyFrame;
}

void KVXKeyFramesTrack::RemoveKeyFrame(qint64 id)
{
    PfDbDocument* document = currentDocument();
    if (!document)
        return;
    PfDbObject* object = document->GetDatabase()->OpenObject(static_cast<PfDbHandle>(id));
    if (KVXKeyFrame* keyFrame = KVXKeyFrame::Cast(object))
        Remove(keyFrame);
}

bool KVXKeyFramesTrack::HasKeyFrameAtTime(int ms) const
{
    for (PfDbObject* object : *this) {
        const KVXKeyFrame* keyFrame = KVXKeyFrame::Cast(object);
        if (keyFrame && keyFrame->GetTime() == ms)
            return true;
    }
    return false;
}

void KVXKeyFramesTrack::GetSortedKeyFramesByTime(std::vector<KVXKeyFrame*>& keyFrames) const
{
    for (PfDbObject* object : *this) {
        KVXKeyFrame* keyFrame = KVXKeyFrame::Cast(object);
        if (!keyFrame)
            continue;
        auto position = std::lower_bound(keyFrames.begin(), keyFrames.end(), keyFrame,
                                         [](const KVXKeyFrame* a, const KVXKeyFrame* b) {
                                             return a->GetTime() < b->GetTime();
                                         });
        keyFrames.insert(position, keyFrame);
    }
}

KVXKeyFrame* KVXKeyFramesTrack::GetKeyFrameAtTime(unsigned int ms, KVXKeyFrame*& before, KVXKeyFrame*& after) const
{
    before = nullptr;
    after = nullptr;
    if (Size() == 0)
        return nullptr;
    std::vector<KVXKeyFrame*> sorted;
    GetSortedKeyFramesByTime(sorted);
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        const unsigned int time = static_cast<unsigned int>(sorted[i]->GetTime());
        if (time == ms) {
            before = i > 0 ? sorted[i - 1] : nullptr;
            after = i + 1 < sorted.size() ? sorted[i + 1] : nullptr;
            return sorted[i];
        }
        if (time > ms) {
            after = sorted[i];
            before = i > 0 ? sorted[i - 1] : nullptr;
            return nullptr;
        }
    }
    before = sorted.empty() ? nullptr : sorted.back();
    return nullptr;
}

PfDbObject* KVXKeyFramesTrack::getOrCreateTrack(PfDbDatabase* database, const std::wstring& name,
                                               KVXKeyFramesTrack* (*make)())
{
    if (!database)
        return nullptr;
    auto it = database->ObjManagers().find(name);
    if (it != database->ObjManagers().end())
        return database->OpenObject(it->second);
    KVXKeyFramesTrack* track = make();
    if (database->AddObjManager(name, track) != Pfad::eOk) {
        delete track;
        return nullptr;
    }
    return track;
}
