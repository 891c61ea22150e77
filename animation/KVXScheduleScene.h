#pragma once

#include <map>
#include <vector>

class KVXAnimation;

// What schedule playback does to the scene around the records' own
// animations: before a play it hides what is still to be built, when the
// schedule stops it leaves each element as its record ends it, and after a
// preview it puts the model back as it was.
class KVXScheduleScene {
public:
    // Every element whose earliest record (in list order, the first of equal
    // start dates) is a construction is clipped away until its record takes
    // over; an element first demolished stays whole.
    static void HideUnbuilt(const std::vector<KVXAnimation*>& records);
    // The element as its record leaves it: built, demolished, not emphasised.
    static void Finish(KVXAnimation* record);
    // Clip planes, moved nodes and overlays of every record taken away.
    static void Restore(const std::map<int, KVXAnimation*>& recordsByNumber);

private:
    static void markViewerDirty();
};
