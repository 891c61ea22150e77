// Cutting a building of about 20,000 triangles with a plane and covering the
// cut, as a construction animation does for its element every frame.

#include "host/vpe/geometry/CBody.h"
#include "host/vpe/geometry/CBooleanOperate.h"
#include "host/vpe/geometry/CPlane.h"
#include "host/vpe/geometry/CSection.h"
#include "host/vpe/geometry/GBodyBuilder.h"

#include "MedianReporter.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr int kStoreys = 18;
constexpr double kStoreyHeight = 3000.0;
constexpr double kTargetMs = 2.0;

// The corners' outline with a point every step along each side.
std::vector<osg::Vec2d> divided(const std::vector<osg::Vec2d>& corners, double step)
{
    std::vector<osg::Vec2d> points;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const osg::Vec2d& a = corners[i];
        const osg::Vec2d& b = corners[(i + 1) % corners.size()];
        const int count = static_cast<int>((b - a).length() / step + 0.5);
        for (int k = 0; k < count; ++k)
            points.push_back(a + (b - a) * (static_cast<double>(k) / count));
    }
    return points;
}

// A 40 m x 20 m floor plan around a 10 m x 5 m atrium, its outline divided
// every 250 mm (the atrium's every 500 mm) and its walls every storey, all
// one closed mesh.
vpe::CBody* makeBuilding()
{
    const std::vector<std::vector<osg::Vec2d>> loops{
        divided({{0, 0}, {40000, 0}, {40000, 20000}, {0, 20000}}, 250.0),
        divided({{15000, 7500}, {15000, 12500}, {25000, 12500}, {25000, 7500}}, 500.0)};
    std::vector<osg::Vec3d> vertices;
    for (int level = 0; level <= kStoreys; ++level) {
        for (const std::vector<osg::Vec2d>& loop : loops) {
            for (const osg::Vec2d& p : loop)
                vertices.emplace_back(p.x(), p.y(), level * kStoreyHeight);
        }
    }
    const auto ring = static_cast<std::uint32_t>(vertices.size() / (kStoreys + 1));
    const std::uint32_t roof = ring * kStoreys;
    std::vector<vpe::CBody::Triangle> triangles;
    for (const vpe::CBody::Triangle& t : vpe::GBodyBuilder::TriangulateLoops(loops)) {
        triangles.push_back({t[2], t[1], t[0]});
        triangles.push_back({t[0] + roof, t[1] + roof, t[2] + roof});
    }
    for (std::uint32_t level = 0; level < kStoreys; ++level) {
        std::uint32_t first = level * ring;
        for (const std::vector<osg::Vec2d>& loop : loops) {
            const auto size = static_cast<std::uint32_t>(loop.size());
            for (std::uint32_t k = 0; k < size; ++k) {
                const std::uint32_t i = first + k, j = first + (k + 1) % size;
                triangles.push_back({i, j, j + ring});
                triangles.push_back({i, j + ring, i + ring});
            }
            first += size;
        }
    }
    return new vpe::CBody(std::move(vertices), std::move(triangles));
}

const vpe::CBody& building()
{
    static const vpe::CRefPtr<vpe::CBody> body = makeBuilding();
    return *body;
}

void splitAndCap(benchmark::State& state, const vpe::CPlane& plane)
{
    const vpe::CBooleanOperate operate(true, true, true, true);
    std::size_t capTriangles = 0;
    for (auto _ : state) {
        vpe::CRefPtr<vpe::CBody> positive, negative;
        vpe::CSection section;
        if (!operate.SplitBody(building(), plane, positive, negative, section)) {
            state.SkipWithError("the plane misses the building");
            break;
        }
        vpe::CRefPtr<vpe::CBody> shell = vpe::GBodyBuilder::CreateShell(section, plane, true, false);
        capTriangles = shell->GetTriangles().size();
        benchmark::DoNotOptimize(shell.get());
    }
    state.counters["cap triangles"] = static_cast<double>(capTriangles);
}

void BM_SplitHorizontal(benchmark::State& state)
{
    splitAndCap(state, vpe::CPlane({0, 0, 9.5 * kStoreyHeight}, {0, 0, 1}));
}

void BM_SplitOblique(benchmark::State& state)
{
    splitAndCap(state, vpe::CPlane({20000, 10000, 27000}, {0.3, 0.2, 1}));
}

void BM_SplitThroughAtrium(benchmark::State& state)
{
    splitAndCap(state, vpe::CPlane({20100, 0, 0}, {1, 0, 0}));
}

BENCHMARK(BM_SplitHorizontal)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(3)->ReportAggregatesOnly();
BENCHMARK(BM_SplitOblique)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(3)->ReportAggregatesOnly();
BENCHMARK(BM_SplitThroughAtrium)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(3)->ReportAggregatesOnly();

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    std::printf("building of %zu triangles, %d storeys\n", building().GetTriangles().size(), kStoreys);
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const auto& [name, ms] : reporter.medians)
        std::printf("%s: %.3f ms per split and cap, %.2f of the %.0f ms target\n", name.c_str(), ms, ms / kTargetMs,
                    kTargetMs);
    return 0;
}
