#pragma once

#include "KVXTimeIndicator.h"

class KVXCameraKeyFrame;
class KVXDateKeyFrame;

// What the key-frame manager needs of the key-frame timeline: its indicator,
// and one marker ("button") per key frame, which the user picks. A button
// holds a camera key frame, a date key frame or both (made together at one
// moment). Implemented by a QObject, held through a KVXIndicatorLink.
class KVXKeyFrameTimeLine : public KVXTimeIndicator {
public:
    virtual unsigned int GetTimeIndicator() const = 0;
    // The key frames of the picked button; null when none is picked or it
    // holds no key frame of that kind.
    virtual KVXCameraKeyFrame* GetPickedCameraKeyFrame() const = 0;
    virtual KVXDateKeyFrame* GetPickedDateKeyFrame() const = 0;
    virtual void CreateKeyFrameButton(KVXCameraKeyFrame* camera, KVXDateKeyFrame* date) = 0;
    virtual void CreateCameraKeyFrameButton(KVXCameraKeyFrame* keyFrame) = 0;
    virtual void CreateDateKeyFrameButton(KVXDateKeyFrame* keyFrame) = 0;
    // Removes the picked button, if any.
    virtual void DeleteKeyFrameButton() = 0;
    virtual void ClearAllKeyFrameButtons() = 0;

protected:
    ~KVXKeyFrameTimeLine() = default;
};
