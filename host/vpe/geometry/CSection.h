#pragma once

#include <osg/Vec3d>

#include <utility>
#include <vector>

namespace vpe {

// The cut face of a body on a plane: closed loops of points on the plane,
// each with the body's material on its left seen from the side the normal
// points to. Outer boundaries therefore run counter-clockwise about the
// plane's normal and holes clockwise; a loop's last point joins its first.
class CSection {
public:
    using Loop = std::vector<osg::Vec3d>;

    void AddLoop(Loop loop) { m_loops.push_back(std::move(loop)); }
    const std::vector<Loop>& GetLoops() const { return m_loops; }
    bool IsEmpty() const { return m_loops.empty(); }
    void Clear() { m_loops.clear(); }

private:
    std::vector<Loop> m_loops;
};

} // namespace vpe
