// Playing the demo site's schedule off screen at 1280x720, one day a second
// at 24 frames a second: frames per second, with the update (clocks,
// animators and their callbacks) and the draw timed apart.

#include "animation/KVXAnimatorManager.h"
#include "animation/KVXEntryPoint.h"
#include "host/app/KVXDemoSite.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfHostClasses.h"
#include "host/vpe/animation/CVideoRecorderTimeSource.h"
#include "host/vpe/render/CViewer.h"
#include "animation/KVXDemoSchedule.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

namespace {

constexpr int kWidth = 1280;
constexpr int kHeight = 720;
// Ten days of the schedule, from its fifteenth.
constexpr int kFrames = 240;
constexpr double kFirstSecond = 15.0;

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    PfHostRegisterClasses();
    PfRxEntryPoint(1, nullptr);
    PfDbDocument* document = PfDocManagerPtr()->NewDocument();
    KVXDemoSite::Build(document->GetDatabase());
    vpe::CViewer* viewer = PfGsModelView::Attach(document)->GetViewer();
    if (!KVXDemoSchedule::Add(document)) {
        std::printf("the demo site lacks an element of its schedule\n");
        return 1;
    }
    viewer->SetActiveViewportSize(kWidth, kHeight);
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    camera->SetLookAt({-90000, -110000, 60000}, {0, 15000, 12000});
    viewer->SetCamera(*camera);
    viewer->SetTimeSource(new vpe::CVideoRecorderTimeSource(24));
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    manager->setSignsVisible(false);
    manager->playAnimationAtDate(manager->getAllAnimationsStartDate().addDays(static_cast<int>(kFirstSecond)));
    manager->play();

    QImage picture;
    viewer->AdvanceFrame();
    viewer->RenderFrame(picture);
    qint64 update = 0;
    qint64 draw = 0;
    QElapsedTimer timer;
    for (int frame = 0; frame < kFrames; ++frame) {
        timer.start();
        viewer->AdvanceFrame();
        update += timer.nsecsElapsed();
        timer.start();
        if (!viewer->RenderFrame(picture)) {
            std::printf("frame %d could not be drawn\n", frame);
            return 1;
        }
        draw += timer.nsecsElapsed();
    }
    const double updateMs = update / 1e6 / kFrames;
    const double drawMs = draw / 1e6 / kFrames;
    std::printf("schedule playback of the demo site, %dx%d, %d frames: %.1f frames per second; update %.2f ms, "
                "draw %.2f ms a frame\n",
                kWidth, kHeight, kFrames, 1000.0 / (updateMs + drawMs), updateMs, drawMs);
    manager->stop();
    return 0;
}
