#pragma once

#include "host/vpe/geometry/CBody.h"

#include <osg/Matrixd>

#include <vector>

// Gathers boxes and prisms into one body, so that a part made of many bars
// (a mast, a jib) is one body and one renderable.
class KVXMeshBuilder {
public:
    void AddBody(const vpe::CBody& body, const osg::Matrixd& placement = osg::Matrixd::identity());
    void AddBox(const osg::Vec3d& min, const osg::Vec3d& max);
    // A square bar of the given width between two points.
    void AddBar(const osg::Vec3d& from, const osg::Vec3d& to, double width);

    bool IsEmpty() const { return m_triangles.empty(); }
    // The body gathered so far; the builder starts empty again.
    vpe::CBody* Take();

private:
    std::vector<osg::Vec3d> m_vertices;
    std::vector<vpe::CBody::Triangle> m_triangles;
};
