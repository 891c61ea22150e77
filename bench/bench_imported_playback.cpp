// Playing a schedule on imported models of growing size: the duplex imported
// once, then four times over (placed side by side by importing again), with
// the same single wall built by the cut plane. The update of a frame (clocks,
// animators, callbacks) should not grow with the triangles of elements that
// are not animated; drawing does, and is shown beside it.

#include "animation/KVXAnimatorManager.h"
#include "animation/KVXEntryPoint.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/import/PfIsolatedModelReader.h"
#include "host/import/PfModelImport.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfHostClasses.h"
#include "host/vpe/animation/CVideoRecorderTimeSource.h"
#include "host/vpe/render/CViewer.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

namespace {

constexpr int kFrames = 96;
const QDate kStart(2026, 3, 2);

struct Timing {
    std::size_t triangles = 0;
    double updateMs = 0.0;
    double drawMs = 0.0;
};

bool play(int copies, Timing& timing)
{
    PfDbDocument* document = PfDocManagerPtr()->NewDocument();
    PfIsolatedModelReader reader(QStringLiteral(KVXHOST_PROGRAM));
    for (int i = 0; i < copies; ++i) {
        PfModelImport::Report report;
        QString error;
        if (!PfModelImport::Import(document->GetDatabase(), reader, QStringLiteral(KVX_TEST_DATA "/models/duplex.ifc"),
                                   report, &error)) {
            std::printf("%s\n", qPrintable(error));
            return false;
        }
        timing.triangles += report.triangles;
    }
    vpe::CViewer* viewer = PfGsModelView::Attach(document)->GetViewer();
    viewer->SetActiveViewportSize(1280, 720);
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    camera->SetLookAt({-30000, -40000, 30000}, {5000, 10000, 0});
    viewer->SetCamera(*camera);
    viewer->SetTimeSource(new vpe::CVideoRecorderTimeSource(24));
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    manager->setSignsVisible(false);
    for (PfDbObject* object : *document->GetDatabase()->GetModelSpace())
        if (KVX3DElementObject::Cast(object)) {
            KVXAnimation* wall = manager->addKvxAnimation(static_cast<qint64>(object->GetHandle()),
                                                          KVXAnimation::Construction, KVXAnimation::BottomUp);
            wall->setStartDate(kStart);
            wall->setEndDate(kStart.addDays(8));
            wall->setDurationDays(8);
            break;
        }
    manager->playAnimationAtDate(kStart);
    manager->play();
    QImage picture;
    viewer->AdvanceFrame();
    viewer->RenderFrame(picture);
    qint64 update = 0, draw = 0;
    QElapsedTimer timer;
    for (int frame = 0; frame < kFrames; ++frame) {
        timer.start();
        viewer->AdvanceFrame();
        update += timer.nsecsElapsed();
        timer.start();
        viewer->RenderFrame(picture);
        draw += timer.nsecsElapsed();
    }
    manager->stop();
    PfDocManagerPtr()->CloseAll();
    timing.updateMs = update / 1e6 / kFrames;
    timing.drawMs = draw / 1e6 / kFrames;
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    PfHostRegisterClasses();
    PfRxEntryPoint(1, nullptr);
    Timing one, four;
    if (!play(1, one) || !play(4, four))
        return 1;
    std::printf("one wall built on the imported duplex, 1280x720, %d frames:\n", kFrames);
    for (const auto& [name, timing] : {std::pair{"x1", one}, std::pair{"x4", four}})
        std::printf("  duplex %s: %7zu triangles, update %.2f ms, draw %.2f ms a frame\n", name, timing.triangles,
                    timing.updateMs, timing.drawMs);
    std::printf("update x4 / x1 = %.2f (should stay near 1: the elements not animated cost nothing a frame)\n",
                four.updateMs / one.updateMs);
    return 0;
}
