#pragma once

#include "CAnimationTrack.h"
#include "host/vpe/scene/CGroupNode.h"

#include <osg/observer_ptr>

namespace vpe {

// Moves a group node: its matrix becomes the interpolated rotation followed
// by the interpolated position.
class CNodeTrack : public CAnimationTrack {
public:
    explicit CNodeTrack(CGroupNode* node) : m_node(node) {}

    CGroupNode* GetNode() const { return m_node.get(); }
    void Apply(double time) override;
    bool MovesScene() const override { return true; }

protected:
    ~CNodeTrack() override = default;

private:
    osg::observer_ptr<CGroupNode> m_node;
};

} // namespace vpe
