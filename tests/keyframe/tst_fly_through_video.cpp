#include "animation/KVXAnimatorManager.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfAutoSave.h"
#include "host/model/PfEdInformation.h"
#include "host/model/PfEdPrompt.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfHostClasses.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CCaption.h"
#include "keyframe/KVXKeyFrameAnimationManager.h"
#include "keyframe/KVXVideoRecordClockTimer.h"
#include "keyframe/KvxOutputVideoSettingDialog.h"

#include "tests/support/FixedStepTimeSource.h"
#include "tests/support/ImageDifference.h"
#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/VideoProbe.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

struct NoticeLog : PfEdInformationSink {
    QStringList texts;
    void Show(const QString&, const QString& text) override { texts << text; }
};

TEST(OutputVideoSettings, refuseWithTheFirstBrokenRuleAndKeepTheDialogOpen)
{
    NoticeLog notices;
    PfEdInformationSink* previous = PfEdInformationSink::Install(&notices);
    const QString file = QDir::temp().filePath(QStringLiteral("fly.mp4"));
    const struct {
        QString path, resolution;
        const char* notice;
    } cases[] = {
        {file, "1920x1080", nullptr},
        {file, "854x480", nullptr},
        {"", "1920X1080", "视频文件不能为空！"},
        {"fly.mp4", "1920x1080", "文件路径不合法，请重新输入！"},
        {file, "1920X1080", "分辨率设置不合法！"},
        {file, "1920x", "分辨率设置不合法！"},
        {file, "x1080", "分辨率设置不合法！"},
        {file, "1920x1080x2", "分辨率设置不合法！"},
        {file, "19a0x1080", "分辨率设置不合法！"},
        {file, "0x480", "分辨率设置范围为：1 ~ 4094, 请重新设置！"},
        {file, "4095x100", "分辨率设置范围为：1 ~ 4094, 请重新设置！"},
        {file, "-5x100", "分辨率设置范围为：1 ~ 4094, 请重新设置！"},
    };
    for (const auto& c : cases) {
        KvxOutputVideoSettingDialog dialog;
        dialog.GetPathEdit()->setText(c.path);
        dialog.GetResolutionBox()->setEditText(c.resolution);
        notices.texts.clear();
        dialog.accept();
        const QString expected = c.notice ? QString::fromUtf8(c.notice) : QString();
        EXPECT_EQ(notices.texts.value(0), expected) << c.path << ' ' << c.resolution;
        EXPECT_EQ(dialog.IsAccepted(), !c.notice) << c.resolution;
    }
    KvxOutputVideoSettingDialog dialog;
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("参数设置"));
    EXPECT_EQ(dialog.GetResolutionBox()->count(), 5);
    dialog.GetPathEdit()->setText(file);
    dialog.GetResolutionBox()->setCurrentIndex(4);
    const KVXKeyFrameAnimationManager::VideoOptions options = dialog.GetVideoOptions();
    EXPECT_EQ(options.width, 854u);
    EXPECT_EQ(options.height, 480u);
    EXPECT_EQ(options.frameRate, 24u);
    EXPECT_EQ(QString::fromStdWString(options.fileName), file);
    PfEdInformationSink::Install(previous);
}

TEST(VideoRecordClock, countsFramesAndWholeSeconds)
{
    EXPECT_EQ(KVXVideoRecordClockTimer::ProgressText(0, 10.5, 24), QStringLiteral("正在导出视频：第0帧 / 共252帧（10秒）"));
    EXPECT_EQ(KVXVideoRecordClockTimer::ProgressText(100, 1.99, 24), QStringLiteral("正在导出视频：第100帧 / 共47帧（1秒）"));
}

// A block and a fly-through of two camera key frames a second apart.
class FlyThroughVideo : public ::testing::Test {
protected:
    void SetUp() override
    {
        previousSink = PfEdInformationSink::Install(&notices);
        document = PfDocManagerPtr()->NewDocument();
        viewer = PfGsModelView::Attach(document)->GetViewer();
        viewer->GetScene()->SetShadowsEnabled(false);
        wallClock = new FixedStepTimeSource(0.5);
        viewer->SetTimeSource(wallClock.get());
        auto* block = new KVX3DElementObject();
        block->AddBody(vpe::CBody::CreateBox({-6000, -6000, 0}, {10000, 10000, 14000}));
        block->SetBodyColor(Qt::red);
        document->GetDatabase()->GetModelSpace()->Add(block);
        manager->InitAnimationData();
    }
    void TearDown() override
    {
        manager->UnInitAnimationData();
        PfDocManagerPtr()->CloseAll();
        PfEdInformationSink::Install(previousSink);
    }
    void addKeyFrames()
    {
        for (auto [ms, x] : {std::pair{0, -20000.0}, std::pair{1000, 20000.0}}) {
            vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
            camera->SetLookAt({x, -20000, 9000}, {2000, 2000, 3000});
            ASSERT_EQ(manager->CreateKeyFrameAt(ms, *camera, QDate()), QString());
        }
    }
    KVXKeyFrameAnimationManager::VideoOptions options(const QString& file) const
    {
        KVXKeyFrameAnimationManager::VideoOptions o;
        o.width = 160;
        o.height = 90;
        o.fileName = file.toStdWString();
        return o;
    }

    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    NoticeLog notices;
    PfEdInformationSink* previousSink = nullptr;
    PfDbDocument* document = nullptr;
    vpe::CViewer* viewer = nullptr;
    vpe::CRefPtr<vpe::CTimeSource> wallClock;
    QTemporaryDir folder;
};

TEST_F(FlyThroughVideo, aSecondOfFlyThroughIsTwentyFourFramesAndEverythingIsGivenBack)
{
    addKeyFrames();
    const QString film = folder.filePath(QStringLiteral("fly.mp4"));
    QString error;
    ASSERT_TRUE(manager->ExportVideo(options(film), &error)) << error;
    const QString streams = probeVideo(film);
    for (const char* fact : {"codec_name=h264", "width=160", "height=90", "r_frame_rate=24/1", "nb_read_frames=24"})
        EXPECT_TRUE(streams.contains(QLatin1String(fact))) << fact << '\n' << streams;
    EXPECT_EQ(notices.texts, QStringList{QStringLiteral("导出视频完成!")});
    EXPECT_EQ(viewer->GetTimeSource(), wallClock.get()) << "the viewer's time source is given back";
    EXPECT_TRUE(PfAutoSave::IsEnabled());
    EXPECT_TRUE(KVXAnimatorManager::getInstance()->getSignsVisible()) << "the labels hidden in the film come back";
    EXPECT_FALSE(manager->IsRecordingVideo());
    EXPECT_FALSE(viewer->GetOffscreenTool()->IsActive());
    EXPECT_EQ(viewer->GetAnimationManager()->FindAnimator("camera_animation"), nullptr);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"fly.mp4"});
}

TEST_F(FlyThroughVideo, itsFramesShowTheCameraOfTheirMoment)
{
    addKeyFrames();
    const QString film = folder.filePath(QStringLiteral("fly.mp4"));
    ASSERT_TRUE(manager->ExportVideo(options(film)));
    viewer->SetActiveViewportSize(160, 90);
    // The camera at frame n is the one the fly-through shows at n / 24 s.
    for (int n : {0, 12, 23}) {
        manager->PlayAnimationAtTime(static_cast<unsigned int>(n * 1000 / 24));
        viewer->AdvanceFrame();
        QImage expected;
        ASSERT_TRUE(viewer->RenderImage(*viewer->GetCamera(), 160, 90, expected));
        const QImage frame = decodedFrame(film, n, folder.path());
        EXPECT_LT(imageDifference(frame, expected), 4.0) << "frame " << n;
        if (n == 12)
            EXPECT_GT(imageDifference(frame, decodedFrame(film, 0, folder.path())), 8.0) << "the camera moved";
    }
    manager->StopAnimation();
}

TEST_F(FlyThroughVideo, aTitleIsCaptionedUnlessTheCaptionIsOff)
{
    addKeyFrames();
    QColor corner[2];
    for (bool captioned : {false, true}) {
        manager->SetFilmCaption(captioned, QStringLiteral("东侧环绕"));
        const QString film = folder.filePath(QStringLiteral("titled-%1.mp4").arg(captioned));
        ASSERT_TRUE(manager->ExportVideo(options(film)));
        const QRect box = viewer->GetCaption()->Area(160, 90);
        corner[captioned] = decodedFrame(film, 0, folder.path()).pixelColor(box.left() + 1, box.center().y());
        EXPECT_FALSE(viewer->GetCaption()->IsVisible());
    }
    manager->SetFilmCaption(true);
    EXPECT_LT(corner[1].lightness(), corner[0].lightness() - 20);
}

TEST_F(FlyThroughVideo, progressGoesToThePromptForADocumentThatWantsIt)
{
    addKeyFrames();
    document->SetPromptOnly(true);
    static QStringList lines;
    lines.clear();
    PfEdPrompt::SetDisplay([](const QString& line) { lines << line; });
    ASSERT_TRUE(manager->ExportVideo(options(folder.filePath(QStringLiteral("fly.mp4")))));
    PfEdPrompt::SetDisplay(nullptr);
    ASSERT_EQ(lines.size(), 25) << lines.join('\n').toStdString();
    EXPECT_EQ(lines.first(), QStringLiteral("正在导出视频：第0帧 / 共24帧（1秒）"));
    EXPECT_EQ(lines[23], QStringLiteral("正在导出视频：第23帧 / 共24帧（1秒）"));
    EXPECT_EQ(lines.last(), QStringLiteral("导出视频完成"));
}

TEST_F(FlyThroughVideo, aRefusedOrFailedExportLeavesAnEarlierFileAsItWas)
{
    const QString film = folder.filePath(QStringLiteral("fly.mp4"));
    QFile earlier(film);
    ASSERT_TRUE(earlier.open(QIODevice::WriteOnly) && earlier.write("earlier") == 7);
    earlier.close();
    QString error;
    EXPECT_FALSE(manager->ExportVideo(options(film), &error));
    EXPECT_EQ(error, QStringLiteral("尚未制作动画"));

    addKeyFrames();
    const QString nowhere = folder.filePath(QStringLiteral("missing/fly.mp4"));
    EXPECT_FALSE(manager->ExportVideo(options(nowhere), &error));
    EXPECT_TRUE(error.contains(nowhere)) << error;
    EXPECT_EQ(viewer->GetTimeSource(), wallClock.get());
    EXPECT_TRUE(PfAutoSave::IsEnabled());
    QFile kept(film);
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), QByteArray("earlier"));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"fly.mp4"});
}

TEST_F(FlyThroughVideo, outputVideoAsksThroughTheDialog)
{
    addKeyFrames();
    const QString film = folder.filePath(QStringLiteral("asked.mp4"));
    QTimer::singleShot(0, [&] {
        auto* dialog = qobject_cast<KvxOutputVideoSettingDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        dialog->GetPathEdit()->setText(film);
        dialog->GetResolutionBox()->setEditText(QStringLiteral("160x90"));
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    manager->OutputVideo();
    EXPECT_TRUE(probeVideo(film).contains(QLatin1String("width=160")));
}

} // namespace
