// Exporting the demo site's fly-through (the main job's key frames, the
// schedule following them) at 1280x720 and 1920x1080, 24 frames a second:
// frames per second of the whole export, and where the time goes, each part
// timed alone on the same frames: drawing the frames, converting them to the
// encoder's colours (RGBA to YUV 4:2:0), and encoding. The encoder converts
// and encodes on its own thread while the next frame is drawn, so the export
// takes less than the sum of its parts.

#include "animation/KVXEntryPoint.h"
#include "host/app/KVXDemoSite.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfEdInformation.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfHostClasses.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/video/ZVideoFFmpeg.h"
#include "keyframe/KVXKeyFrameAnimationManager.h"
#include "animation/KVXDemoSchedule.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

extern "C" {
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

#include <cstdio>
#include <vector>

namespace {

// Seconds of the fly-through drawn for the parts timed alone.
constexpr int kSampledFrames = 48;

struct Silent : PfEdInformationSink {
    void Show(const QString&, const QString&) override {}
};

void addFlyThrough()
{
    struct Moment {
        int ms;
        vpe::CVec3<double> eye, target;
        QDate date;
    };
    const Moment moments[] = {
        {0, {-180000, -220000, 110000}, {10000, 10000, 10000}, QDate(2025, 3, 3)},
        {5000, {-90000, -110000, 60000}, {0, 15000, 12000}, QDate()},
        {10000, {110000, -60000, 45000}, {10000, 15000, 12000}, QDate()},
        {15000, {90000, 110000, 50000}, {10000, 15000, 12000}, QDate()},
        {20000, {40000, -15000, 55000}, {20000, 6000, 50000}, QDate()},
        {26000, {20000, -60000, 160000}, {10000, 15000, 0}, QDate(2025, 4, 29)},
    };
    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    for (const Moment& m : moments) {
        vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
        camera->SetLookAt(m.eye, m.target);
        manager->CreateKeyFrameAt(m.ms, *camera, m.date);
    }
}

// The fly-through's frames at its first seconds, drawn without recording.
double drawAlone(vpe::CViewer* viewer, int width, int height, std::vector<QImage>& frames)
{
    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    viewer->SetActiveViewportSize(width, height);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < kSampledFrames; ++i) {
        manager->PlayAnimationAtTime(static_cast<unsigned int>(i * 1000 / 24));
        QImage frame;
        viewer->AdvanceFrame();
        viewer->RenderFrame(frame);
        frames.push_back(frame);
    }
    const double seconds = timer.elapsed() / 1000.0;
    manager->StopAnimation();
    return seconds;
}

// RGBA to YUV 4:2:0, as the encoder converts each frame.
double convertAlone(const std::vector<QImage>& frames)
{
    const int width = frames.front().width();
    const int height = frames.front().height();
    SwsContext* scaler = sws_getContext(width, height, AV_PIX_FMT_BGRA, width, height, AV_PIX_FMT_YUV420P,
                                        SWS_BILINEAR, nullptr, nullptr, nullptr);
    AVFrame* yuv = av_frame_alloc();
    yuv->format = AV_PIX_FMT_YUV420P;
    yuv->width = width;
    yuv->height = height;
    av_frame_get_buffer(yuv, 0);
    QElapsedTimer timer;
    timer.start();
    for (const QImage& frame : frames) {
        const uint8_t* source[1] = {frame.constBits()};
        const int stride[1] = {static_cast<int>(frame.bytesPerLine())};
        sws_scale(scaler, source, stride, 0, height, yuv->data, yuv->linesize);
    }
    const double seconds = timer.elapsed() / 1000.0;
    av_frame_free(&yuv);
    sws_freeContext(scaler);
    return seconds;
}

double convertAndEncode(const std::vector<QImage>& frames, const QString& path)
{
    ZVideoFFmpeg encoder;
    QElapsedTimer timer;
    timer.start();
    encoder.Open(path, frames.front().width(), frames.front().height(), 24);
    for (const QImage& frame : frames)
        encoder.WriteFrame(frame);
    encoder.Finish();
    return timer.elapsed() / 1000.0;
}

void measure(vpe::CViewer* viewer, int width, int height, const QTemporaryDir& folder)
{
    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    KVXKeyFrameAnimationManager::VideoOptions options;
    options.width = static_cast<unsigned int>(width);
    options.height = static_cast<unsigned int>(height);
    options.fileName = folder.filePath(QStringLiteral("fly-%1.mp4").arg(height)).toStdWString();
    const int frames = static_cast<int>(manager->getAnimationVideoLength() * 24);
    QElapsedTimer timer;
    timer.start();
    QString error;
    if (!manager->ExportVideo(options, &error)) {
        std::printf("export failed: %s\n", qPrintable(error));
        return;
    }
    const double exported = timer.elapsed() / 1000.0;
    std::vector<QImage> sampled;
    const double draw = drawAlone(viewer, width, height, sampled);
    const double convert = convertAlone(sampled);
    const double both = convertAndEncode(sampled, folder.filePath(QStringLiteral("again.mp4")));
    const double encode = both > convert ? both - convert : 0.0;
    const double parts = draw + convert + encode;
    std::printf("%dx%d: %d frames in %.1f s, %.1f frames a second; per frame alone: draw %.1f ms, convert %.1f ms, "
                "encode %.1f ms; shares %.0f%% / %.0f%% / %.0f%%; the export took %.2f of their sum\n",
                width, height, frames, exported, frames / exported, 1000.0 * draw / kSampledFrames,
                1000.0 * convert / kSampledFrames, 1000.0 * encode / kSampledFrames, 100.0 * draw / parts,
                100.0 * convert / parts, 100.0 * encode / parts, (exported / frames) / (parts / kSampledFrames));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    PfHostRegisterClasses();
    PfRxEntryPoint(1, nullptr);
    Silent silent;
    PfEdInformationSink::Install(&silent);
    PfDbDocument* document = PfDocManagerPtr()->NewDocument();
    KVXDemoSite::Build(document->GetDatabase());
    if (!KVXDemoSchedule::Add(document)) {
        std::printf("the demo site lacks an element of its schedule\n");
        return 1;
    }
    // Made before the view, so that no thumbnail is drawn.
    KVXKeyFrameAnimationManager::GetInstance()->InitAnimationData();
    addFlyThrough();
    vpe::CViewer* viewer = PfGsModelView::Attach(document)->GetViewer();
    KVXKeyFrameAnimationManager::GetInstance()->InitAnimationData();
    QTemporaryDir folder;
    for (auto [width, height] : {std::pair{1280, 720}, std::pair{1920, 1080}})
        measure(viewer, width, height, folder);
    return 0;
}
