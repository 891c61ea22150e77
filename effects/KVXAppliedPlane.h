#pragma once

#include "KVXAnimPlane.h"

#include <osg/BoundingBox>

namespace osg {
class Node;
}

// One clip plane of a node (by index) as an effect last set it. Setting it
// again where it already is, or moving it while it stays clear of the node's
// box on the same side (so it still cuts all or nothing), changes nothing on
// screen and is skipped: most records of a long schedule are not under way,
// and their planes move every frame without cutting anything.
class KVXAppliedPlane {
public:
    explicit KVXAppliedPlane(int index = 0) : m_index(index) {}

    // True when the node's state sets were changed.
    bool Set(osg::Node* node, const KVXAnimPlane& plane, const osg::BoundingBox& box, int index);
    bool Remove(osg::Node* node, int index);
    // Whether the plane last set goes through the node's box (a plane beside
    // it cuts all or nothing).
    bool Cuts() const { return m_state == State::Cutting; }
    // The next call applies whatever it is given (the node was changed by
    // someone else).
    void Forget() { m_state = State::Unknown; }

private:
    enum class State { Unknown, Removed, Cutting, ClipsAll, KeepsAll };

    static State classify(const KVXAnimPlane& plane, const osg::BoundingBox& box);

    int m_index;
    State m_state = State::Unknown;
    KVXAnimPlane m_plane;
};
