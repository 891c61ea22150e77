#pragma once

// The context an element draws itself in: whether the view wants the plan
// (2D) or the model (3D).
class PfGiWorldDraw {
public:
    enum RegenType { kPlan2d, kModel3d };

    explicit PfGiWorldDraw(RegenType type = kModel3d) : m_type(type) {}
    RegenType GetRegenType() const { return m_type; }

private:
    RegenType m_type;
};
