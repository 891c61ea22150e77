#include "host/model/KVXDrawHelper.h"
#include "host/vpe/animation/CVideoRecorderTimeSource.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/video/CVideoMakerFFmpegPlugin.h"

#include "tests/support/QtPrinters.h"
#include "tests/support/VideoProbe.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class VideoRecording : public ::testing::Test {
protected:
    void SetUp() override
    {
        vpe::CRefPtr<vpe::CBody> block = vpe::CBody::CreateBox({-1000, -1000, 0}, {1000, 1000, 2000});
        viewer->GetScene()->GetRootNode()->addChild(KVXDrawHelper::CreateBodyNode(*block, Qt::red));
        viewer->SetActiveViewportSize(800, 600);
    }
    QString path(const char* name) const { return directory.filePath(QLatin1String(name)); }

    QTemporaryDir directory;
    vpe::CRefPtr<vpe::CViewer> viewer = new vpe::CViewer;
};

TEST_F(VideoRecording, withoutThePluginNothingCanBeRecorded)
{
    // Runs first: the plug-in stays loaded for the rest of the process.
    ASSERT_FALSE(vpe::CVideoMakerFFmpegPlugin::IsLoaded());
    vpe::CVideoRecorder* recorder = viewer->GetAnimationManager()->GetOrCreateVideoRecorder();
    recorder->SetFileName(path("no.mp4"));
    QString error;
    EXPECT_FALSE(recorder->RecordBegin(0.0, &error));
    EXPECT_TRUE(error.contains(QLatin1String("encoder"))) << error;
}

TEST_F(VideoRecording, everyFrameDrawnWhileRecordingIsInTheVideo)
{
    ASSERT_TRUE(vpe::CVideoMakerFFmpegPlugin::LoadPlugin());
    vpe::COffscreenTool* offscreen = viewer->GetOffscreenTool();
    offscreen->SetSize(320, 240);
    offscreen->Begin();
    viewer->SetTimeSource(new vpe::CVideoRecorderTimeSource(24));
    vpe::CVideoRecorder* recorder = viewer->GetAnimationManager()->GetOrCreateVideoRecorder();
    recorder->SetFileName(path("fly.mp4"));
    recorder->SetFrameRate(24);
    recorder->SetResolution(viewer->GetActiveViewportWidth(), viewer->GetActiveViewportHeight());
    QString error;
    ASSERT_TRUE(recorder->RecordBegin(0.0, &error)) << error;

    QImage frame;
    for (int i = 0; i < 48; ++i)
        ASSERT_TRUE(viewer->Frame(frame, &error)) << error;
    recorder->RecordEnd(viewer->GetDefaultTimer()->GetValue());
    ASSERT_TRUE(recorder->LastError().isEmpty()) << recorder->LastError();
    ASSERT_TRUE(viewer->GetVideoMaker()->Finish(&error)) << error;
    offscreen->End();

    EXPECT_NEAR(recorder->GetEndTime(), 2.0, 1e-9);
    EXPECT_EQ(viewer->GetActiveViewportWidth(), 800);
    const QString streams = probeVideo(path("fly.mp4"));
    EXPECT_TRUE(streams.contains(QLatin1String("codec_name=h264"))) << streams;
    EXPECT_TRUE(streams.contains(QLatin1String("width=320"))) << streams;
    EXPECT_TRUE(streams.contains(QLatin1String("height=240"))) << streams;
    EXPECT_TRUE(streams.contains(QLatin1String("r_frame_rate=24/1"))) << streams;
    EXPECT_TRUE(streams.contains(QLatin1String("nb_read_frames=48"))) << streams;
}

TEST_F(VideoRecording, anUnwritablePathIsRefusedAndLeavesNoFile)
{
    vpe::CVideoMakerFFmpegPlugin::LoadPlugin();
    vpe::CVideoRecorder* recorder = viewer->GetAnimationManager()->GetOrCreateVideoRecorder();
    const QString target = path("missing/folder/fly.mp4");
    recorder->SetFileName(target);
    QString error;
    EXPECT_FALSE(recorder->RecordBegin(0.0, &error));
    EXPECT_TRUE(error.contains(target)) << error;
    EXPECT_FALSE(recorder->IsRecording());
    QImage frame;
    viewer->Frame(frame);
    EXPECT_FALSE(QFile::exists(target));
}

TEST_F(VideoRecording, anOldFileStaysUntilTheNewVideoIsFinished)
{
    vpe::CVideoMakerFFmpegPlugin::LoadPlugin();
    const QString target = path("fly.mp4");
    QFile old(target);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly) && old.write("an earlier film") > 0);
    old.close();
    vpe::CVideoMaker* maker = viewer->GetVideoMaker();
    QImage frame(64, 48, QImage::Format_RGB32);
    frame.fill(Qt::blue);
    for (bool finish : {false, true}) {
        QString error;
        ASSERT_TRUE(maker->Begin(target, 64, 48, 24, &error)) << error;
        ASSERT_TRUE(maker->AddFrame(frame, &error)) << error;
        QFile file(target);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), QByteArray("an earlier film")) << "while the new one is made";
        file.close();
        if (finish)
            ASSERT_TRUE(maker->Finish(&error)) << error;
        else
            maker->Cancel();
        EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"fly.mp4"});
    }
    EXPECT_TRUE(probeVideo(target).contains(QLatin1String("nb_read_frames=1")));
}

} // namespace
