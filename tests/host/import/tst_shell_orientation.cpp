#include "host/import/PfShellOrientation.h"
#include "host/vpe/geometry/CBody.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using Shape = PfShellOrientation::Shape;
using Triangles = std::vector<PfShellOrientation::Triangle>;

struct Mesh {
    std::vector<osg::Vec3d> vertices;
    Triangles triangles;
};

// A closed box far from the origin (site coordinates), wound outward.
Mesh box(double at = 5.0e6)
{
    vpe::CRefPtr<vpe::CBody> body = vpe::CBody::CreateBox({at, at, 0}, {at + 1000, at + 2000, 3000});
    return {body->GetVertices(), body->GetTriangles()};
}

double volume(const Mesh& mesh)
{
    vpe::CRefPtr<vpe::CBody> body = new vpe::CBody(mesh.vertices, mesh.triangles);
    return body->GetVolume();
}

// No two triangles run an edge the same way.
bool consistent(const Mesh& mesh)
{
    std::set<std::pair<std::uint32_t, std::uint32_t>> edges;
    for (const auto& t : mesh.triangles)
        for (int k = 0; k < 3; ++k)
            if (!edges.insert({t[k], t[(k + 1) % 3]}).second)
                return false;
    return true;
}

TEST(ShellOrientation, windsEveryShellConsistentlyAndOutward)
{
    const struct {
        const char* what;
        std::vector<std::size_t> flipped; // triangles turned before
        bool removeOne;
        Shape shape;
    } cases[] = {
        {"as delivered", {}, false, Shape::Closed},
        {"some faces turned", {0, 3, 4, 9}, false, Shape::Closed},
        {"inside out", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, false, Shape::Closed},
        {"open, some turned", {2, 5}, true, Shape::Open},
    };
    for (const auto& c : cases) {
        Mesh mesh = box();
        for (std::size_t i : c.flipped)
            std::swap(mesh.triangles[i][1], mesh.triangles[i][2]);
        if (c.removeOne)
            mesh.triangles.pop_back();
        EXPECT_EQ(PfShellOrientation::Orient(mesh.vertices, mesh.triangles), c.shape) << c.what;
        EXPECT_TRUE(consistent(mesh)) << c.what;
        if (!c.removeOne)
            EXPECT_NEAR(volume(mesh), 1000.0 * 2000.0 * 3000.0, 1e3) << c.what;
    }
}

TEST(ShellOrientation, partsAreTurnedApartAndTouchingPartsStayApart)
{
    // Two boxes in one shell, the second inside out and touching the first
    // along a face with vertices of its own (not welded).
    Mesh first = box(0.0), second = box(0.0);
    for (osg::Vec3d& v : second.vertices)
        v.x() += 1000.0;
    for (auto& t : second.triangles)
        std::swap(t[1], t[2]);
    Mesh both = first;
    const auto offset = std::uint32_t(both.vertices.size());
    both.vertices.insert(both.vertices.end(), second.vertices.begin(), second.vertices.end());
    for (auto t : second.triangles)
        both.triangles.push_back({t[0] + offset, t[1] + offset, t[2] + offset});
    EXPECT_EQ(PfShellOrientation::Orient(both.vertices, both.triangles), Shape::Closed);
    EXPECT_NEAR(volume(both), 2.0 * 1000.0 * 2000.0 * 3000.0, 1e3);
}

TEST(ShellOrientation, anEdgeOfThreeTrianglesIsNonManifold)
{
    Mesh fin = box();
    fin.vertices.push_back(fin.vertices[0] + osg::Vec3d(-500, -500, 0));
    const auto tip = std::uint32_t(fin.vertices.size() - 1);
    const auto& t = fin.triangles[0];
    fin.triangles.push_back({t[0], t[1], tip});
    EXPECT_EQ(PfShellOrientation::Orient(fin.vertices, fin.triangles), Shape::NonManifold);
}

} // namespace
