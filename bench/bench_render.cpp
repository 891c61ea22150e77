// Off-screen renders of the demo site: frames per second at 1280x720 and
// 1920x1080, anti-aliased (drawn at twice the size and averaged down) and
// not, with and without shadows, and the costs as ratios.

#include "host/app/KVXDemoSite.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfHostClasses.h"
#include "host/vpe/CViewer.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace {

vpe::CViewer* siteViewer()
{
    static vpe::CViewer* viewer = [] {
        PfDbDocument* document = PfDocManagerPtr()->NewDocument();
        KVXDemoSite::Build(document->GetDatabase());
        return PfGsModelView::Attach(document)->GetViewer();
    }();
    return viewer;
}

vpe::CRefPtr<vpe::CCamera> threeQuarterCamera()
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    const osg::Vec3f eye(-90000.0f, -140000.0f, 90000.0f), target(15000.0f, 0.0f, 5000.0f);
    camera->SetLookAt(osg::Vec3d(eye), osg::Vec3d(target));
    return camera;
}

void BM_RenderSite(benchmark::State& state)
{
    vpe::CViewer* viewer = siteViewer();
    const int width = static_cast<int>(state.range(0)), height = static_cast<int>(state.range(1));
    viewer->SetSupersampling(static_cast<int>(state.range(2)));
    viewer->GetScene()->SetShadowsEnabled(state.range(3) != 0);
    const vpe::CRefPtr<vpe::CCamera> camera = threeQuarterCamera();
    QImage picture;
    viewer->RenderImage(*camera, width, height, picture);
    for (auto _ : state) {
        viewer->RenderImage(*camera, width, height, picture);
        benchmark::DoNotOptimize(picture.constBits());
    }
    state.counters["fps"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

BENCHMARK(BM_RenderSite)
    ->ArgNames({"w", "h", "aa", "shadows"})
    ->Args({1280, 720, 1, 1})
    ->Args({1280, 720, 2, 1})
    ->Args({1280, 720, 2, 0})
    ->Args({1920, 1080, 1, 1})
    ->Args({1920, 1080, 2, 1})
    ->Args({1920, 1080, 2, 0})
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2.0)
    ->UseRealTime();

class RateReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            fps[run.benchmark_name()] = run.counters.at("fps");
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> fps;
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    PfHostRegisterClasses();
    benchmark::Initialize(&argc, argv);
    RateReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    auto fps = [&](const char* size, int aa, int shadows) {
        return reporter.fps[std::string("BM_RenderSite/") + size + "/aa:" + std::to_string(aa) +
                            "/shadows:" + std::to_string(shadows) + "/min_time:2.000/real_time"];
    };
    for (const char* size : {"w:1280/h:720", "w:1920/h:1080"}) {
        const double plain = fps(size, 1, 1), smooth = fps(size, 2, 1), unshadowed = fps(size, 2, 0);
        if (plain > 0 && smooth > 0 && unshadowed > 0)
            std::printf("%s: %.1f fps without anti-aliasing, %.1f fps with it (costs %.2fx); without shadows %.1f fps "
                        "(shadows cost %.2fx)\n",
                        size, plain, smooth, plain / smooth, unshadowed, unshadowed / smooth);
    }
    return 0;
}
