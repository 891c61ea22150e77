#pragma once

#include "host/vpe/core/CReferenced.h"

#include <osg/Matrixd>
#include <osg/Quat>
#include <osg/Vec3d>

#include <vector>

namespace vpe {

// A key of a track: where (and how turned) something is at a time.
struct CNodeKeyFrame {
    double time = 0.0;
    osg::Vec3d position;
    osg::Quat rotation;
};

// Key frames in time order and what lies between them: positions
// interpolate linearly, rotations spherically; before the first key the
// first holds, after the last the last.
class CAnimationTrack : public CReferenced {
public:
    // Kept in time order; a key at the time of another replaces it.
    void AddKeyFrame(const CNodeKeyFrame& keyFrame);
    const std::vector<CNodeKeyFrame>& GetKeyFrames() const { return m_keyFrames; }
    // False without key frames.
    bool Interpolate(double time, osg::Vec3d& position, osg::Quat& rotation) const;
    // Moves what the track drives to the time.
    virtual void Apply(double time) = 0;
    // Whether what it drives is part of the scene (and may cast shadows).
    virtual bool MovesScene() const = 0;

protected:
    ~CAnimationTrack() override = default;

private:
    std::vector<CNodeKeyFrame> m_keyFrames;
};

} // namespace vpe
