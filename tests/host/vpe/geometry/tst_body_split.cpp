#include "host/vpe/geometry/CBody.h"
#include "host/vpe/geometry/CBooleanOperate.h"
#include "host/vpe/geometry/CPlane.h"
#include "host/vpe/geometry/CSection.h"
#include "host/vpe/geometry/GBodyBuilder.h"

#include <osg/Matrixd>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

using vpe::CBody;
using vpe::CRefPtr;
using Outline = std::vector<osg::Vec2d>;

Outline rectangle(double x0, double y0, double x1, double y1)
{
    return {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}};
}

// Test bodies, in millimetres.
CBody* box()
{
    return CBody::CreateBox({0, 0, 0}, {4000, 3000, 2000});
}

// Legs 3000 long and 300 thick, symmetric about x = y: area 1.71e6.
CBody* lWall()
{
    return CBody::CreateExtrusion({{0, 0}, {3000, 0}, {3000, 300}, {300, 300}, {300, 3000}, {0, 3000}}, 0, 2500);
}

// Symmetric about x = 1500: area 1.92e6.
CBody* uWall()
{
    return CBody::CreateExtrusion(
        {{0, 0}, {3000, 0}, {3000, 2000}, {2700, 2000}, {2700, 300}, {300, 300}, {300, 2000}, {0, 2000}}, 0, 2500);
}

// Area 23e6, opening 1000 x 1000 centred on (2500, 2000).
CBody* slab()
{
    return vpe::GBodyBuilder::CreateExtrusion(rectangle(0, 0, 6000, 4000), {rectangle(2000, 1500, 3000, 2500)}, 0,
                                              200);
}

// A hollow column: area 2e5.
CBody* tube()
{
    return vpe::GBodyBuilder::CreateExtrusion(rectangle(0, 0, 600, 600), {rectangle(100, 100, 500, 500)}, 0, 3000);
}

// A wall 300 thick whose profile steps back at z = 1000, so that the step is
// a face lying in that plane.
CBody* steppedWall()
{
    CRefPtr<CBody> flat =
        CBody::CreateExtrusion({{0, 0}, {2000, 0}, {2000, 1000}, {1000, 1000}, {1000, 2000}, {0, 2000}}, 0, 300);
    return flat->Transformed(osg::Matrixd::rotate(osg::PI_2, osg::X_AXIS));
}

// The box with degenerate triangles as mesh tools leave them: the first
// edge of its first triangle (the top edge x = 0, y = 3000 to 0) split at its
// midpoint with the T-junction sealed by a triangle of no area, and a
// triangle with a repeated corner across the box's space diagonal.
CBody* boxWithSlivers()
{
    CRefPtr<CBody> source = box();
    std::vector<osg::Vec3d> vertices = source->GetVertices();
    std::vector<CBody::Triangle> triangles = source->GetTriangles();
    const CBody::Triangle t = triangles[0];
    const auto middle = static_cast<std::uint32_t>(vertices.size());
    vertices.push_back((vertices[t[0]] + vertices[t[1]]) * 0.5);
    triangles[0] = {t[0], middle, t[2]};
    triangles.push_back({middle, t[1], t[2]});
    triangles.push_back({t[0], t[1], middle});
    const auto opposite = static_cast<std::uint32_t>(
        std::find(vertices.begin(), vertices.end(), osg::Vec3d(4000, 0, 0)) - vertices.begin());
    triangles.push_back({t[0], t[0], opposite});
    return new CBody(std::move(vertices), std::move(triangles));
}

// Two square pyramids (bases 1000 x 1000 turned by 45 degrees, heights
// 1000) meeting at their apex, one mesh sharing that vertex: the plane x = 0
// cuts two triangles that touch there. The apex comes last, so that the
// loops are not simply started from it.
CBody* hourglass()
{
    const double r = 1000 * std::sqrt(0.5);
    std::vector<osg::Vec3d> vertices;
    for (double z : {1000.0, -1000.0}) {
        for (const osg::Vec2d& p : Outline{{r, 0}, {0, r}, {-r, 0}, {0, -r}})
            vertices.emplace_back(p.x(), p.y(), z);
    }
    vertices.emplace_back(0, 0, 0);
    std::vector<CBody::Triangle> triangles{{0, 1, 2}, {0, 2, 3}, {4, 6, 5}, {4, 7, 6}};
    for (std::uint32_t i = 0; i < 4; ++i) {
        const std::uint32_t j = (i + 1) % 4;
        triangles.push_back({8, j, i});
        triangles.push_back({8, 4 + i, 4 + j});
    }
    return new CBody(std::move(vertices), std::move(triangles));
}

struct SplitCase {
    const char* name;
    CBody* (*make)();
    osg::Vec3d point;
    osg::Vec3d normal;
    double sectionArea;
    double positiveVolume;
    int outerLoops;
    int holes;
    std::vector<osg::Vec3d> open;    // on the plane in an opening
    std::vector<osg::Vec3d> covered; // on the plane in material
};

void PrintTo(const SplitCase& split, std::ostream* os)
{
    *os << split.name;
}

const double kRoot125 = std::sqrt(1.25);

const std::vector<SplitCase> kSplits = {
    {"boxHorizontal", box, {0, 0, 500}, {0, 0, 1}, 12e6, 18e9, 1, 0, {}, {{2000, 1500, 500}}},
    {"boxOblique", box, {2000, 1500, 1000}, {0, -0.5, 1}, 12e6 * kRoot125, 12e9, 1, 0, {}, {}},
    {"boxThroughOppositeEdges", box, {0, 0, 0}, {3, -4, 0}, 5000 * 2000, 12e9, 1, 0, {}, {}},
    {"boxOneMillimetreBelowTop", box, {0, 0, 1999}, {0, 0, 1}, 12e6, 12e6, 1, 0, {}, {}},
    {"lWallHorizontal", lWall, {0, 0, 1000}, {0, 0, 1}, 1.71e6, 1.71e6 * 1500, 1, 0, {{1500, 1500, 1000}},
     {{1500, 150, 1000}}},
    {"lWallOblique", lWall, {0, 0, 1250}, {-0.1, 0.1, 1}, 1.71e6 * std::sqrt(1.02), 1.71e6 * 1250, 1, 0, {}, {}},
    {"uWallThroughLegs", uWall, {0, 1000, 0}, {0, 1, 0}, 2 * 300 * 2500, 2 * 300 * 1000 * 2500.0, 2, 0,
     {{1500, 1000, 1000}}, {{150, 1000, 1000}}},
    {"uWallObliqueAcrossLegs", uWall, {1500, 0, 1250}, {-0.2, 0, 1}, 1.92e6 * std::sqrt(1.04), 1.92e6 * 1250, 1, 0,
     {}, {}},
    {"slabHorizontal", slab, {0, 0, 100}, {0, 0, 1}, 23e6, 23e6 * 100, 1, 1, {{2500, 2000, 100}},
     {{1000, 1000, 100}}},
    {"slabThroughOpening", slab, {2500, 0, 0}, {1, 0, 0}, 3000 * 200, (14e6 - 0.5e6) * 200, 2, 0,
     {{2500, 2000, 100}}, {{2500, 500, 100}}},
    {"slabThroughOpeningCorners", slab, {2500, 2000, 0}, {1, 1, 0}, 3000 * std::sqrt(2.0) * 200,
     (14e6 - 0.5e6) * 200, 2, 0, {{2500, 2000, 100}}, {{1000, 3500, 100}}},
    {"tubeOblique", tube, {300, 300, 1500}, {-0.5, 0, 1}, 2e5 * kRoot125, 2e5 * 1500, 1, 1, {{300, 300, 1500}},
     {{50, 300, 1375}}},
    // Through the top of the opening's corner, so that the opening touches
    // the outline of the cut there: z = 2 (x + y) + 1000.
    {"tubeThroughInnerCorner", tube, {500, 500, 3000}, {1, 1, -0.5}, 5.4e5, 4.4e8 - 8e6 / 3, 1, 1,
     {{300, 300, 2200}}, {{50, 300, 1700}}},
    {"steppedWallAtItsStep", steppedWall, {0, 0, 1000}, {0, 0, 1}, 3e5, 3e8, 1, 0, {{1500, -150, 1000}},
     {{500, -150, 1000}}},
    {"sliversCrossed", boxWithSlivers, {0, 1000, 0}, {0, 1, 0}, 8e6, 16e9, 1, 0, {}, {}},
    {"sliverMidpointOnPlane", boxWithSlivers, {0, 1500, 0}, {0, 1, 0}, 8e6, 12e9, 1, 0, {}, {}},
    {"hourglassThroughApex", hourglass, {0, 0, 0}, {1, 0, 0}, 1e6 * std::sqrt(2.0), 1e9 / 3, 2, 0, {{0, 400, 100}},
     {{0, 0, 500}, {0, 0, -500}}},
};

// A cap's area seen along the normal, and how many of its triangles face the
// other way: folded or overlapping triangles can leave the area right.
struct Faces {
    double area = 0.0;
    int against = 0;
};

Faces faces(const CBody& shell, const osg::Vec3d& normal)
{
    Faces result;
    for (const CBody::Triangle& t : shell.GetTriangles()) {
        const std::vector<osg::Vec3d>& v = shell.GetVertices();
        const double doubled = ((v[t[1]] - v[t[0]]) ^ (v[t[2]] - v[t[0]])) * normal;
        result.area += 0.5 * doubled;
        result.against += doubled <= 0.0;
    }
    return result;
}

bool covers(const CBody& shell, const vpe::CPlane& plane, const osg::Vec3d& point)
{
    const osg::Vec2d p = plane.ToPlane(point);
    auto side = [&p](const osg::Vec2d& a, const osg::Vec2d& b) {
        return (b.x() - a.x()) * (p.y() - a.y()) - (b.y() - a.y()) * (p.x() - a.x());
    };
    for (const CBody::Triangle& t : shell.GetTriangles()) {
        const osg::Vec2d a = plane.ToPlane(shell.GetVertices()[t[0]]);
        const osg::Vec2d b = plane.ToPlane(shell.GetVertices()[t[1]]);
        const osg::Vec2d c = plane.ToPlane(shell.GetVertices()[t[2]]);
        if (side(a, b) >= 0 && side(b, c) >= 0 && side(c, a) >= 0)
            return true;
    }
    return false;
}

class SplitBody : public testing::TestWithParam<SplitCase> {
protected:
    void SetUp() override
    {
        body = GetParam().make();
        ASSERT_TRUE(body->IsClosed());
        plane = vpe::CPlane(GetParam().point, GetParam().normal);
        ASSERT_TRUE(vpe::CBooleanOperate(true, true, true, true).SplitBody(*body, plane, positive, negative, section));
        shell = vpe::GBodyBuilder::CreateShell(section, plane, true, false);
        ASSERT_TRUE(positive.valid() && negative.valid() && shell.valid());
    }

    CRefPtr<CBody> body, positive, negative, shell;
    vpe::CPlane plane;
    vpe::CSection section;
};

TEST_P(SplitBody, partsAreClosedAndShareTheVolume)
{
    const double volume = body->GetVolume();
    EXPECT_TRUE(positive->IsClosed());
    EXPECT_TRUE(negative->IsClosed());
    EXPECT_NEAR(positive->GetVolume() + negative->GetVolume(), volume, 1e-9 * volume);
    EXPECT_NEAR(positive->GetVolume(), GetParam().positiveVolume, 1e-9 * volume);
}

TEST_P(SplitBody, capCoversTheSectionButNotItsOpenings)
{
    const Faces cap = faces(*shell, plane.GetNormal());
    EXPECT_NEAR(cap.area, GetParam().sectionArea, 1e-6 * GetParam().sectionArea);
    EXPECT_EQ(cap.against, 0);
    for (const osg::Vec3d& p : GetParam().open)
        EXPECT_FALSE(covers(*shell, plane, p)) << p.x() << ' ' << p.y() << ' ' << p.z();
    for (const osg::Vec3d& p : GetParam().covered)
        EXPECT_TRUE(covers(*shell, plane, p)) << p.x() << ' ' << p.y() << ' ' << p.z();
}

TEST_P(SplitBody, loopsLieOnThePlaneWoundByKind)
{
    int outers = 0, holes = 0;
    for (const vpe::CSection::Loop& loop : section.GetLoops()) {
        double area = 0.0;
        for (std::size_t i = 0, j = loop.size() - 1; i < loop.size(); j = i++) {
            EXPECT_NEAR(plane.GetDistance(loop[i]), 0.0, 1e-6);
            const osg::Vec2d a = plane.ToPlane(loop[j]), b = plane.ToPlane(loop[i]);
            area += a.x() * b.y() - b.x() * a.y();
        }
        ++(area > 0 ? outers : holes);
    }
    EXPECT_EQ(outers, GetParam().outerLoops);
    EXPECT_EQ(holes, GetParam().holes);
}

INSTANTIATE_TEST_SUITE_P(Bodies, SplitBody, testing::ValuesIn(kSplits),
                         [](const testing::TestParamInfo<SplitCase>& info) { return std::string(info.param.name); });

// On planes in general position the cap's area is the rate at which the
// positive part shrinks as the plane advances: a check of the cap that needs
// no expected value.
TEST(SplitBodySweep, capAreaIsTheRateOfVolumeChange)
{
    const vpe::CBooleanOperate operate(true, true, true, true);
    const double step = 0.01;
    for (CBody* (*make)() : {box, lWall, uWall, slab, tube, steppedWall, hourglass}) {
        CRefPtr<CBody> body = make();
        // Off centre, so that no plane passes through the hourglass's apex.
        const osg::BoundingBoxd bounds = body->GetBoundingBox();
        const osg::Vec3d centre = bounds.center() + (bounds._max - bounds._min) * 0.07;
        for (int i = 0; i < 8; ++i) {
            const double tilt = 0.3 + 0.37 * i, turn = 0.5 + 1.9 * i;
            const osg::Vec3d normal(std::sin(tilt) * std::cos(turn), std::sin(tilt) * std::sin(turn), std::cos(tilt));
            double volumes[3] = {};
            CRefPtr<CBody> shell;
            for (int k = 0; k < 3; ++k) {
                const vpe::CPlane plane(centre + normal * (step * (k - 1)), normal);
                CRefPtr<CBody> positive, negative;
                vpe::CSection section;
                ASSERT_TRUE(operate.SplitBody(*body, plane, positive, negative, section));
                EXPECT_TRUE(positive->IsClosed() && negative->IsClosed());
                EXPECT_NEAR(positive->GetVolume() + negative->GetVolume(), body->GetVolume(), 1e-9 * body->GetVolume());
                volumes[k] = positive->GetVolume();
                if (k == 1)
                    shell = vpe::GBodyBuilder::CreateShell(section, plane, true, false);
            }
            ASSERT_TRUE(shell.valid()) << "plane " << i;
            const Faces cap = faces(*shell, normal);
            EXPECT_EQ(cap.against, 0);
            EXPECT_NEAR(cap.area, (volumes[0] - volumes[2]) / (2 * step), 1e-5 * cap.area) << "plane " << i;
        }
    }
}

TEST(SplitBodyFlags, buildsOnlyWhatIsAsked)
{
    CRefPtr<CBody> body = box();
    const vpe::CPlane plane({0, 0, 500}, {0, 0, 1});
    CRefPtr<CBody> positive, negative;
    vpe::CSection section;
    ASSERT_TRUE(vpe::CBooleanOperate(true, false, false, false).SplitBody(*body, plane, positive, negative, section));
    ASSERT_TRUE(positive.valid());
    EXPECT_FALSE(positive->IsClosed());
    EXPECT_FALSE(negative.valid());
    EXPECT_TRUE(section.IsEmpty());
    ASSERT_TRUE(vpe::CBooleanOperate(false, true, true, true).SplitBody(*body, plane, positive, negative, section));
    EXPECT_FALSE(positive.valid());
    ASSERT_TRUE(negative.valid());
    EXPECT_TRUE(negative->IsClosed());
    EXPECT_EQ(section.GetLoops().size(), 1u);
}

struct ShellCase {
    const char* name;
    std::vector<Outline> loops; // outer loops counter-clockwise, holes clockwise
    double area;
    std::vector<osg::Vec2d> open;
    std::vector<osg::Vec2d> covered;
};

void PrintTo(const ShellCase& shell, std::ostream* os)
{
    *os << shell.name;
}

Outline clockwise(Outline outline)
{
    std::reverse(outline.begin(), outline.end());
    return outline;
}

class Shell : public testing::TestWithParam<ShellCase> {};

TEST_P(Shell, coversTheLoopsAndLeavesHolesOpen)
{
    // Laid out in the plane's own frame, so that the bridges fall where the
    // cases mean them to.
    const vpe::CPlane up({0, 0, 0}, {0, 0, 1}), down({0, 0, 0}, {0, 0, -1});
    vpe::CSection section;
    for (const Outline& loop : GetParam().loops) {
        vpe::CSection::Loop points;
        for (const osg::Vec2d& p : loop)
            points.push_back(up.FromPlane(p));
        section.AddLoop(points);
    }
    const double area = GetParam().area;
    CRefPtr<CBody> shell = vpe::GBodyBuilder::CreateShell(section, up, true, false);
    ASSERT_TRUE(shell.valid());
    EXPECT_NEAR(faces(*shell, up.GetNormal()).area, area, 1e-9 * area);
    EXPECT_EQ(faces(*shell, up.GetNormal()).against, 0);
    for (const osg::Vec2d& p : GetParam().open)
        EXPECT_FALSE(covers(*shell, up, up.FromPlane(p))) << p.x() << ' ' << p.y();
    for (const osg::Vec2d& p : GetParam().covered)
        EXPECT_TRUE(covers(*shell, up, up.FromPlane(p))) << p.x() << ' ' << p.y();

    // Facing as asked, also for loops wound about the other normal.
    CRefPtr<CBody> against = vpe::GBodyBuilder::CreateShell(section, up, false, false);
    CRefPtr<CBody> fromBelow = vpe::GBodyBuilder::CreateShell(section, down, true, false);
    CRefPtr<CBody> twoSided = vpe::GBodyBuilder::CreateShell(section, up, true, true);
    EXPECT_NEAR(faces(*against, up.GetNormal()).area, -area, 1e-9 * area);
    EXPECT_NEAR(faces(*fromBelow, down.GetNormal()).area, area, 1e-9 * area);
    EXPECT_EQ(faces(*twoSided, up.GetNormal()).against, static_cast<int>(shell->GetTriangles().size()));
}

INSTANTIATE_TEST_SUITE_P(
    Loops, Shell,
    testing::Values(
        // The ray from the hole meets the right side, whose top end hides
        // behind a notch coming down from the top.
        ShellCase{"bridgeEndHiddenByNotch",
                  {{{0, 0}, {10, 0}, {10, 10}, {6.5, 10}, {6, 5}, {5.5, 10}, {0, 10}},
                   clockwise(rectangle(2, 4, 3, 6))},
                  95.5,
                  {{2.5, 5}, {6, 8}},
                  {{8, 5}, {4, 5}, {6, 3}}},
        // The island's hole lies in both outer loops around it and belongs
        // to the smaller.
        ShellCase{"holedIslandInHoleAndSecondOuter",
                  {rectangle(0, 0, 10, 10), clockwise(rectangle(2, 2, 8, 8)), rectangle(3, 3, 7, 7),
                   clockwise(rectangle(4, 4, 6, 6)), rectangle(20, 0, 30, 10), clockwise(rectangle(22, 2, 24, 4))},
                  172,
                  {{2.5, 2.5}, {5, 5}, {23, 3}},
                  {{3.5, 5}, {1, 1}, {25, 5}}},
        // Joined from the left, the first hole's bridge would cross the
        // second.
        ShellCase{"holesSideBySide",
                  {rectangle(0, 0, 20, 10), clockwise(rectangle(2, 4, 4, 6)), clockwise(rectangle(8, 3, 10, 7))},
                  188,
                  {{3, 5}, {9, 5}},
                  {{6, 5}, {15, 5}}},
        // The second hole's bridge ends where the first touches the outline,
        // a point the ring then passes four times.
        ShellCase{"holesBridgedAtATouchingCorner",
                  {{{0, 0}, {10, 0}, {10, 5}, {10, 10}, {0, 10}}, {{10, 5}, {8, 1}, {7, 2}},
                   clockwise(rectangle(2, 3.5, 3, 4.5))},
                  96,
                  {{8.3, 2.7}, {2.5, 4}},
                  {{5, 5}, {9.8, 8}, {9.8, 1}}}),
    [](const testing::TestParamInfo<ShellCase>& info) { return std::string(info.param.name); });

struct MissCase {
    const char* name;
    osg::Vec3d point;
    osg::Vec3d normal;
};

class SplitBodyMiss : public testing::TestWithParam<MissCase> {};

// Touching the box, or coming within the snapping tolerance of it, is a
// miss just like passing by.
TEST_P(SplitBodyMiss, failsWithEmptyOutputs)
{
    CRefPtr<CBody> body = box();
    CRefPtr<CBody> positive = box(), negative = box();
    vpe::CSection section;
    section.AddLoop({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    const vpe::CPlane plane(GetParam().point, GetParam().normal);
    EXPECT_FALSE(vpe::CBooleanOperate(true, true, true, true).SplitBody(*body, plane, positive, negative, section));
    EXPECT_FALSE(positive.valid());
    EXPECT_FALSE(negative.valid());
    EXPECT_TRUE(section.IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Planes, SplitBodyMiss,
                         testing::Values(MissCase{"above", {0, 0, 2500}, {0, 0, 1}},
                                         MissCase{"below", {0, 0, -1}, {0, 0, -1}},
                                         MissCase{"throughTopFace", {0, 0, 2000}, {0, 0, 1}},
                                         MissCase{"throughBottomFaceFacingDown", {0, 0, 0}, {0, 0, -1}},
                                         MissCase{"withinToleranceOfTopFace", {0, 0, 2000 - 1e-6}, {0, 0, 1}},
                                         MissCase{"alongAnEdge", {0, 0, 0}, {1, 1, 0}},
                                         MissCase{"zeroNormal", {1000, 1000, 1000}, {0, 0, 0}}),
                         [](const testing::TestParamInfo<MissCase>& info) { return std::string(info.param.name); });

// Rectilinear outlines as walls and slabs are cut, turned and moved far
// out, with corners on common lines (rounded off them by the turn): the
// triangles cover each outline once, none folded back over its outside.
TEST(TriangulateLoops, turnedRectilinearOutlinesWithCornersInLineAreCoveredWithoutFolds)
{
    std::mt19937 random(1);
    for (int trial = 0; trial < 20000; ++trial) {
        // Columns of one unit, each with its own top and bottom.
        const int columns = 3 + int(random() % 12);
        std::vector<int> top(columns), bottom(columns);
        for (int i = 0; i < columns; ++i) {
            top[i] = 2 + int(random() % 3);
            bottom[i] = -int(random() % 3);
        }
        std::vector<osg::Vec2d> ring{{0.0, double(bottom[0])}};
        for (int i = 0; i < columns; ++i) {
            ring.push_back({double(i + 1), double(bottom[i])});
            if (i + 1 < columns && bottom[i + 1] != bottom[i])
                ring.push_back({double(i + 1), double(bottom[i + 1])});
        }
        ring.push_back({double(columns), double(top[columns - 1])});
        for (int i = columns - 1; i >= 0; --i) {
            ring.push_back({double(i), double(top[i])});
            if (i > 0 && top[i - 1] != top[i])
                ring.push_back({double(i), double(top[i - 1])});
        }
        double area = 0.0;
        for (std::size_t i = 0; i < ring.size(); ++i)
            area += ring[i].x() * ring[(i + 1) % ring.size()].y() - ring[(i + 1) % ring.size()].x() * ring[i].y();
        const double angle = (random() % 3600) * 0.1 * osg::PI / 180.0;
        const osg::Vec2d shift(double(random() % 200000) - 100000.0, double(random() % 200000) - 100000.0);
        const double scale = 100.0 + random() % 3000;
        area *= scale * scale / 2.0;
        for (osg::Vec2d& p : ring) {
            const osg::Vec2d q = p * scale;
            p = osg::Vec2d(q.x() * std::cos(angle) - q.y() * std::sin(angle),
                           q.x() * std::sin(angle) + q.y() * std::cos(angle)) +
                shift;
        }
        double covered = 0.0, mostNegative = 0.0;
        for (const vpe::CBody::Triangle& t : vpe::GBodyBuilder::TriangulateLoops({ring})) {
            const osg::Vec2d &a = ring[t[0]], &b = ring[t[1]], &c = ring[t[2]];
            const double signedArea = ((b - a).x() * (c - a).y() - (b - a).y() * (c - a).x()) / 2.0;
            covered += std::abs(signedArea);
            mostNegative = std::min(mostNegative, signedArea);
        }
        ASSERT_NEAR(covered, area, 1e-6 * area) << "trial " << trial << ", " << ring.size() << " corners";
        ASSERT_GT(mostNegative, -1e-6 * area) << "trial " << trial;
    }
}

} // namespace
