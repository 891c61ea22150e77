#include "host/vpe/geometry/CBodySlicer.h"
#include "host/vpe/geometry/CBooleanOperate.h"
#include "host/vpe/geometry/CPlane.h"
#include "host/vpe/geometry/GBodyBuilder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using vpe::CBody;
using vpe::CRefPtr;

// Twice the signed area of the loops about the normal (holes count negative).
double sectionArea(const vpe::CSection& section, const osg::Vec3d& normal)
{
    double area = 0.0;
    for (const vpe::CSection::Loop& loop : section.GetLoops()) {
        osg::Vec3d sum;
        for (std::size_t i = 0; i < loop.size(); ++i)
            sum += loop[i] ^ loop[(i + 1) % loop.size()];
        area += sum * normal;
    }
    return area / 2.0;
}

// A slab 6 m x 4 m, 200 mm thick, with a 1 m opening, and an L-shaped wall.
std::vector<CRefPtr<CBody>> bodies()
{
    return {vpe::GBodyBuilder::CreateExtrusion({{0, 0}, {6000, 0}, {6000, 4000}, {0, 4000}},
                                               {{{2000, 1500}, {3000, 1500}, {3000, 2500}, {2000, 2500}}}, 0, 200),
            CBody::CreateExtrusion({{0, 0}, {3000, 0}, {3000, 300}, {300, 300}, {300, 3000}, {0, 3000}}, 0, 2500)};
}

TEST(BodySlicer, agreesWithTheGeneralSplitEverywhereBetweenVertices)
{
    const osg::Vec3d normals[] = {{1, 0, 0}, {0, -1, 0}, {0, 0, 1}, {0.3, 0.2, 1.0}};
    for (const CRefPtr<CBody>& body : bodies()) {
        const osg::BoundingBoxd box = body->GetBoundingBox();
        for (const osg::Vec3d& direction : normals) {
            CRefPtr<vpe::CBodySlicer> slicer = new vpe::CBodySlicer(*body, direction);
            for (double f = 0.013; f < 1.0; f += 0.0517) {
                const osg::Vec3d point = box._min + (box._max - box._min) * f;
                vpe::CSection sliced;
                bool same = false;
                const vpe::CBodySlicer::Result result = slicer->Slice(point, sliced, same);
                vpe::CSection split;
                CRefPtr<CBody> positive, negative;
                const vpe::CPlane plane(point, direction);
                const bool cut = vpe::CBooleanOperate(false, false, true, false)
                                     .SplitBody(*body, plane, positive, negative, split);
                if (result == vpe::CBodySlicer::Degenerate)
                    continue;
                ASSERT_EQ(result == vpe::CBodySlicer::Sliced, cut) << f;
                EXPECT_NEAR(sectionArea(sliced, plane.GetNormal()), sectionArea(split, plane.GetNormal()),
                            1e-6 * std::fabs(sectionArea(split, plane.GetNormal())) + 1e-6)
                    << "f " << f;
                EXPECT_EQ(sliced.GetLoops().size(), split.GetLoops().size()) << "f " << f;
            }
        }
    }
}

TEST(BodySlicer, slidesBetweenVertexLevelsAndStopsAtThem)
{
    CRefPtr<CBody> slab = bodies()[0];
    CRefPtr<vpe::CBodySlicer> slicer = new vpe::CBodySlicer(*slab, {0, 0, 1});
    vpe::CSection section;
    bool same = true;
    ASSERT_EQ(slicer->Slice({0, 0, 50}, section, same), vpe::CBodySlicer::Sliced);
    EXPECT_FALSE(same);
    ASSERT_EQ(section.GetLoops().size(), 2u) << "the outline and the opening";

    std::size_t count = 0;
    for (const vpe::CSection::Loop& loop : section.GetLoops())
        count += loop.size();
    std::vector<std::uint32_t> all(count);
    for (std::uint32_t i = 0; i < count; ++i)
        all[i] = i;
    std::vector<osg::Vec3f> points;
    ASSERT_TRUE(slicer->Slide({0, 0, 150}, all, points));
    ASSERT_EQ(points.size(), count);
    for (const osg::Vec3f& p : points)
        EXPECT_FLOAT_EQ(p.z(), 150.0f);
    // Back where the section was taken: its points, one loop after the other.
    ASSERT_TRUE(slicer->Slide({0, 0, 50}, all, points));
    std::size_t i = 0;
    for (const vpe::CSection::Loop& loop : section.GetLoops()) {
        for (const osg::Vec3d& p : loop) {
            EXPECT_LT((osg::Vec3d(points[i]) - p).length(), 1e-3) << i;
            ++i;
        }
    }
    ASSERT_TRUE(slicer->Slide({0, 0, 150}, {3, 0}, points));
    ASSERT_EQ(points.size(), 2u);
    EXPECT_FLOAT_EQ(points[1].x(), float(section.GetLoops()[0][0].x())) << "in the order asked";
    EXPECT_FALSE(slicer->Slide({0, 0, 150}, {std::uint32_t(count)}, points)) << "past the last point";
    ASSERT_EQ(slicer->Slice({0, 0, 120}, section, same), vpe::CBodySlicer::Sliced);
    EXPECT_TRUE(same);

    EXPECT_FALSE(slicer->Slide({0, 0, 200}, all, points)) << "the top face is a vertex level";
    // On the top or the bottom, or within the tolerance of either: there
    // is no vertex level beyond (reading one overran the heights).
    for (double z : {200.0, 200.0 + 1e-10, 200.0 - 1e-10, 0.0, 1e-10, -1e-10})
        EXPECT_EQ(slicer->Slice({0, 0, z}, section, same), vpe::CBodySlicer::Degenerate) << z;
    EXPECT_EQ(slicer->Slice({0, 0, 250}, section, same), vpe::CBodySlicer::Missed);
    EXPECT_EQ(slicer->Slice({0, 0, -1}, section, same), vpe::CBodySlicer::Missed);
    EXPECT_TRUE(section.IsEmpty());
}

TEST(BodySlicer, anOpenBodyIsLeftToTheGeneralSplit)
{
    CRefPtr<CBody> box = CBody::CreateBox({0, 0, 0}, {10, 10, 10});
    std::vector<CBody::Triangle> open(box->GetTriangles().begin() + 2, box->GetTriangles().end());
    CRefPtr<CBody> broken = new CBody(box->GetVertices(), open);
    CRefPtr<vpe::CBodySlicer> slicer = new vpe::CBodySlicer(*broken, {1, 0, 0});
    vpe::CSection section;
    bool same = false;
    EXPECT_EQ(slicer->Slice({5, 5, 5}, section, same), vpe::CBodySlicer::Degenerate);
}

} // namespace
