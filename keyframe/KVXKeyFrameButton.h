#pragma once

class KVXCameraKeyFrame;
class KVXDateKeyFrame;

// One marker on the key-frame timeline: the key frames it stands for (a
// camera key frame, a date key frame, or both made at one moment), drawn at
// their time, and whether the user picked it.
struct KVXKeyFrameButton {
    bool picked = false;
    KVXCameraKeyFrame* cameraKeyFrame = nullptr;
    KVXDateKeyFrame* dateKeyFrame = nullptr;

    // The moment of its key frames, in milliseconds.
    int Time() const;
};
