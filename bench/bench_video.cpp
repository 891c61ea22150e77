// Recording the demo site at 1920x1080, 24 frames per second: frames per
// second of render + encode through the viewer's recorder (target: at least
// 24, real time), against encoding the same frames alone (target: render +
// encode within 1.3x of encoding alone).

#include "host/app/KVXDemoSite.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfHostClasses.h"
#include "host/vpe/animation/CVideoRecorderTimeSource.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/video/CVideoMakerFFmpegPlugin.h"
#include "host/vpe/video/ZVideoFFmpeg.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <cstdio>
#include <vector>

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kFrames = 72;

void aimCamera(vpe::CViewer* viewer, int frame)
{
    // A slow pan along the site, as a fly-through does.
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    const osg::Vec3f eye(-90000.0f + 800.0f * frame, -140000.0f, 90000.0f), target(15000.0f, 0.0f, 5000.0f);
    camera->SetLookAt(osg::Vec3d(eye), osg::Vec3d(target));
    viewer->SetCamera(*camera);
}

double recordSite(vpe::CViewer* viewer, const QString& path, std::vector<QImage>& frames)
{
    viewer->GetOffscreenTool()->SetSize(kWidth, kHeight);
    viewer->GetOffscreenTool()->Begin();
    viewer->SetTimeSource(new vpe::CVideoRecorderTimeSource(24));
    vpe::CVideoRecorder* recorder = viewer->GetAnimationManager()->GetOrCreateVideoRecorder();
    recorder->SetFileName(path);
    recorder->SetFrameRate(24);
    recorder->SetResolution(kWidth, kHeight);
    QElapsedTimer timer;
    timer.start();
    recorder->RecordBegin(0.0);
    QImage frame;
    for (int i = 0; i < kFrames; ++i) {
        aimCamera(viewer, i);
        viewer->Frame(frame);
        frames.push_back(frame);
    }
    recorder->RecordEnd(viewer->GetDefaultTimer()->GetValue());
    viewer->GetVideoMaker()->Finish(nullptr);
    viewer->GetOffscreenTool()->End();
    return timer.elapsed() / 1000.0;
}

double encodeAlone(const std::vector<QImage>& frames, const QString& path)
{
    ZVideoFFmpeg encoder;
    QElapsedTimer timer;
    timer.start();
    encoder.Open(path, kWidth, kHeight, 24);
    for (const QImage& frame : frames)
        encoder.WriteFrame(frame);
    encoder.Finish();
    return timer.elapsed() / 1000.0;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    PfHostRegisterClasses();
    vpe::CVideoMakerFFmpegPlugin::LoadPlugin();
    PfDbDocument* document = PfDocManagerPtr()->NewDocument();
    KVXDemoSite::Build(document->GetDatabase());
    vpe::CViewer* viewer = PfGsModelView::Attach(document)->GetViewer();
    QTemporaryDir directory;
    std::vector<QImage> frames;
    QImage warmUp;
    viewer->RenderImage(*viewer->GetCamera(), kWidth, kHeight, warmUp);

    const double recording = recordSite(viewer, directory.filePath("site.mp4"), frames);
    const double encoding = encodeAlone(frames, directory.filePath("again.mp4"));
    std::printf("%d frames at %dx%d: render + encode %.1f fps (target >= 24), encode alone %.1f fps, "
                "ratio %.2f (target <= 1.3)\n",
                kFrames, kWidth, kHeight, kFrames / recording, kFrames / encoding, recording / encoding);
    return 0;
}
