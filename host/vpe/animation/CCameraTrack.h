#pragma once

#include "CAnimable.h"
#include "CAnimationTrack.h"

namespace vpe {

// Moves a camera through its animable. A key's rotation turns the camera's
// local axes onto its side, view and up directions; the animable receives
// them in the columns of the matrix (see CCameraAnimable) and the position
// in its translation row.
class CCameraTrack : public CAnimationTrack {
public:
    void SetAnimable(CAnimable* animable) { m_animable = animable; }
    CAnimable* GetAnimable() const { return m_animable.get(); }
    void Apply(double time) override;
    bool MovesScene() const override { return false; }

protected:
    ~CCameraTrack() override = default;

private:
    CRefPtr<CAnimable> m_animable;
};

} // namespace vpe
