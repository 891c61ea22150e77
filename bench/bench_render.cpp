// Off-screen renders of the demo site: frames per second at 1280x720 and
// 1920x1080, without anti-aliasing, with edge smoothing (the default) and
// supersampled (drawn at twice the size and averaged down), with and without
// shadows, and the costs as ratios. The camera stands still, as between the
// frames of a view that only repaints; BM_RenderSiteChanging marks the
// scene changed every frame, as a schedule playing does, so the shadows are
// drawn every time.

#include "host/app/KVXDemoSite.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfHostClasses.h"
#include "host/vpe/render/CViewer.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

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

// Processor time of the whole process, the renderer's threads included: what
// a render takes away from an encoder running beside it, and steadier than
// wall time when the machine is shared.
double processSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto seconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
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
    viewer->SetAntiAliasing(static_cast<vpe::CViewer::AntiAliasing>(state.range(2)));
    viewer->GetScene()->SetShadowsEnabled(state.range(3) != 0);
    const vpe::CRefPtr<vpe::CCamera> camera = threeQuarterCamera();
    QImage picture;
    viewer->RenderImage(*camera, width, height, picture);
    const double processStart = processSeconds();
    for (auto _ : state) {
        if (state.range(4))
            viewer->SetDirty();
        viewer->RenderImage(*camera, width, height, picture);
        benchmark::DoNotOptimize(picture.constBits());
    }
    state.counters["fps"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["cpu_ms"] = 1000.0 * (processSeconds() - processStart) / static_cast<double>(state.iterations());
}

BENCHMARK(BM_RenderSite)
    ->ArgNames({"w", "h", "aa", "shadows", "changing"})
    ->Args({1280, 720, 0, 1, 0})
    ->Args({1280, 720, 1, 1, 0})
    ->Args({1280, 720, 2, 1, 0})
    ->Args({1280, 720, 1, 0, 0})
    ->Args({1280, 720, 1, 1, 1})
    ->Args({1920, 1080, 0, 1, 0})
    ->Args({1920, 1080, 1, 1, 0})
    ->Args({1920, 1080, 2, 1, 0})
    ->Args({1920, 1080, 1, 0, 0})
    ->Args({1920, 1080, 1, 1, 1})
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
    auto fps = [&](const char* size, int aa, int shadows, int changing) {
        return reporter.fps[std::string("BM_RenderSite/") + size + "/aa:" + std::to_string(aa) +
                            "/shadows:" + std::to_string(shadows) + "/changing:" + std::to_string(changing) +
                            "/min_time:2.000/real_time"];
    };
    for (const char* size : {"w:1280/h:720", "w:1920/h:1080"}) {
        const double plain = fps(size, 0, 1, 0), smooth = fps(size, 1, 1, 0), supersampled = fps(size, 2, 1, 0);
        const double unshadowed = fps(size, 1, 0, 0), changing = fps(size, 1, 1, 1);
        if (plain > 0 && smooth > 0 && supersampled > 0 && unshadowed > 0 && changing > 0)
            std::printf("%s: %.1f fps without anti-aliasing, %.1f fps with edge smoothing (costs %.2fx), %.1f fps "
                        "supersampled (costs %.2fx); without shadows %.1f fps (kept shadows cost %.2fx, shadows "
                        "drawn every frame %.2fx)\n",
                        size, plain, smooth, plain / smooth, supersampled, plain / supersampled, unshadowed,
                        unshadowed / smooth, unshadowed / changing);
    }
    return 0;
}
