#pragma once

#include "CCameraTrack.h"
#include "CFrameCallback.h"
#include "CNodeTrack.h"

#include <osg/Node>
#include <osg/observer_ptr>

#include <string>
#include <vector>

namespace vpe {

// A named animation: a length in seconds, tracks that move nodes or
// cameras, and a frame callback with the node it changes. Evaluating it at a
// time applies the tracks, then calls the callback.
class CAnimation : public CReferenced {
public:
    CAnimation(std::string name, double length) : m_name(std::move(name)), m_length(length) {}

    const std::string& GetName() const { return m_name; }
    double GetLength() const { return m_length; }
    void SetLength(double seconds) { m_length = seconds; }

    void SetFrameCallback(CSceneNode* node, CFrameCallback* callback);
    CFrameCallback* GetFrameCallback() const { return m_callback.get(); }
    CSceneNode* GetCallbackNode() const;

    CNodeTrack* CreateNodeTrack(CGroupNode* node);
    CCameraTrack* CreateCameraTrack();
    std::size_t GetNumTracks() const { return m_tracks.size(); }
    // Whether evaluating it can move what is drawn (a camera track cannot).
    bool MovesScene() const;

    void Evaluate(const CFrameTime& time);

protected:
    ~CAnimation() override = default;

private:
    std::string m_name;
    double m_length;
    std::vector<CRefPtr<CAnimationTrack>> m_tracks;
    osg::observer_ptr<CSceneNode> m_node;
    CRefPtr<CFrameCallback> m_callback;
};

} // namespace vpe
