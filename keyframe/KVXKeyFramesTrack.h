#pragma once

#include "host/db/PfDbObjContainer.h"

#include <QtGlobal>

#include <string>
#include <vector>

class PfDbDatabase;

class KVXKeyFrame;

// The container of one kind of key frame in a project. Items stay in the
// order they were added; lookups by time build the sorted list afresh (tracks
// hold a few dozen key frames) and compare times exactly.
class KVXKeyFramesTrack : public PfDbObjContainer {
    PFRX_DECLARE_MEMBERS(KVXKeyFramesTrack)
public:
    // Null without a current document; the base track makes nothing.
    virtual KVXKeyFrame* CreateKeyFrame(int ms);
    // Removes (and erases) the key frame with this id when it is one of this
    // track's; anything else is ignored.
    virtual void RemoveKeyFrame(qint64 id);

    bool HasKeyFrameAtTime(int ms) const;
    // Inserts every key frame into the vector by time, after the ones already
    // there that are earlier; a key frame goes before equal times already
    // there. The vector is not cleared first.
    void GetSortedKeyFramesByTime(std::vector<KVXKeyFrame*>& keyFrames) const;
    // The key frame exactly at ms, or null; before and after are its
    // neighbours in time (or those of ms when there is none at ms).
    KVXKeyFrame* GetKeyFrameAtTime(unsigned int ms, KVXKeyFrame*& before, KVXKeyFrame*& after) const;

protected:
    virtual KVXKeyFrame* createKeyFrameImpl(int ms);
    // Adds a new key frame to the track; deletes it and answers null when it
    // cannot be added.
    KVXKeyFrame* adopt(KVXKeyFrame* keyFrame);
    // The object manager of that name, made with make() and registered when
    // the database has none; whatever object holds the name otherwise.
    static PfDbObject* getOrCreateTrack(PfDbDatabase* database, const std::wstring& name,
                                        KVXKeyFramesTrack* (*make)());
};
