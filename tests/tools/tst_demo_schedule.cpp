#include "animation/KVXAnimatorManager.h"
#include "animation/KVXScheduleVideo.h"
#include "host/app/KVXDemoSite.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/rx/PfEdCommandStack.h"
#include "host/rx/PfRxDictionary.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CCaption.h"
#include "keyframe/KVXDateAnimationClockTimer.h"
#include "keyframe/KVXScheduleDateClock.h"
#include "animation/KVXDemoSchedule.h"
#include "animation/KVXScheduleEvents.h"
#include "animation/KVXTowerAnimation.h"

#include "tests/support/FixedStepTimeSource.h"
#include "tests/support/ImageDifference.h"
#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/VideoProbe.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace {

const QDate kFirstDay(2025, 3, 3);

// The demo site and its schedule, seen from the south-west.
class DemoSchedule : public ::testing::Test {
protected:
    static constexpr int kWidth = 640;
    static constexpr int kHeight = 400;

    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        KVXDemoSite::Build(document->GetDatabase());
        view = PfGsModelView::Attach(document);
        viewer = view->GetViewer();
        viewer->SetTimeSource(new FixedStepTimeSource);
        ASSERT_TRUE(KVXDemoSchedule::Add(document));
        camera = new vpe::CCamera;
        camera->SetLookAt({-90000, -110000, 60000}, {0, 15000, 12000});
        camera->SetAspectRatio(float(kWidth) / kHeight);
        viewer->SetCamera(*camera);
        viewer->SetActiveViewportSize(kWidth, kHeight);
        manager->setSignsVisible(false);
    }
    void TearDown() override
    {
        manager->stop();
        PfDocManagerPtr()->CloseAll();
    }

    const KVX3DElementObject* element(const QString& name) const
    {
        for (PfDbObject* object : *document->GetDatabase()->GetModelSpace()) {
            const auto* solid = KVX3DElementObject::Cast(object);
            if (solid && QString::fromStdWString(solid->GetName()) == name)
                return solid;
        }
        return nullptr;
    }
    // The middle of the storey's face towards the camera (its south face).
    QPoint storeyFace(const QString& name) const
    {
        const KVX3DElementObject* storey = element(name);
        EXPECT_NE(storey, nullptr) << name.toStdString();
        osg::BoundingBoxd box;
        for (const auto& body : storey->GetBodies())
            box.expandBy(body->GetBoundingBox());
        return project({box.center().x(), box.yMin(), box.center().z()});
    }
    QPoint project(const osg::Vec3d& point) const
    {
        const osg::Matrixd projection = osg::Matrixd::perspective(
            camera->GetFieldOfView(), double(kWidth) / kHeight, camera->GetNearDistance(), camera->GetFarDistance());
        const osg::Vec3d ndc = point * camera->GetViewMatrix() * projection;
        return QPoint(int((ndc.x() + 1.0) * 0.5 * kWidth), int((1.0 - ndc.y()) * 0.5 * kHeight));
    }
    QImage at(const QDate& date)
    {
        manager->playAnimationAtDate(date);
        for (int frame = 0; frame < 3; ++frame)
            viewer->AdvanceFrame();
        QImage picture;
        QString error;
        EXPECT_TRUE(viewer->RenderFrame(picture, &error)) << error.toStdString();
        if (qEnvironmentVariableIsSet("KVX_TEST_PICTURES"))
            picture.save(QDir(qEnvironmentVariable("KVX_TEST_PICTURES")).filePath("demo_" + date.toString("MMdd") + ".png"));
        return picture;
    }
    // Whether the storey shows at that pixel: the picture changes there when
    // the storey is taken out.
    bool shows(const QImage& picture, const QString& name, const QPoint& pixel)
    {
        osg::Node* node = element(name)->GetSceneNode(view);
        const unsigned int mask = node->getNodeMask();
        node->setNodeMask(0);
        QImage without;
        viewer->RenderFrame(without);
        node->setNodeMask(mask);
        const QColor a = picture.pixelColor(pixel);
        const QColor b = without.pixelColor(pixel);
        return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue()) > 12;
    }

    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    PfDbDocument* document = nullptr;
    PfGsModelView* view = nullptr;
    vpe::CViewer* viewer = nullptr;
    vpe::CRefPtr<vpe::CCamera> camera;
};

TEST_F(DemoSchedule, eachDateShowsWhatStandsThen)
{
    struct Probe {
        const char* storey;
        bool standing;
    };
    struct Moment {
        int day;
        std::vector<Probe> probes;
    };
    // 3号楼 comes down a storey every three days from the first; 1号楼 goes
    // up a storey every five days from the fourth; 2号楼 a storey every six
    // days from the twentieth, each from its west end.
    const Moment moments[] = {
        {1, {{"3号楼 9层", true}, {"3号楼 2层", true}, {"1号楼 1层", false}, {"1号楼 3层", false}}},
        {21,
         {{"3号楼 9层", false}, {"1号楼 1层", true}, {"1号楼 3层", true}, {"1号楼 6层", false}, {"2号楼 1层", false}}},
        {50, {{"3号楼 2层", false}, {"1号楼 1层", true}, {"1号楼 6层", true}, {"2号楼 1层", true}}},
    };
    for (const Moment& moment : moments) {
        const QImage picture = at(kFirstDay.addDays(moment.day));
        for (const Probe& probe : moment.probes) {
            const QString name = QString::fromUtf8(probe.storey);
            const QPoint pixel = storeyFace(name);
            ASSERT_TRUE(picture.rect().contains(pixel)) << probe.storey;
            EXPECT_EQ(shows(picture, name, pixel), probe.standing) << "day " << moment.day << ", " << probe.storey;
        }
    }
}

TEST_F(DemoSchedule, theFilmIsAStandardVideo)
{
    auto* commands = PfEdCommandStack::Cast(PfRxSysRegistry()->GetAt(kPfRxRegisteredCommandsName));
    ASSERT_NE(commands, nullptr);
    QTemporaryDir folder;
    const QString film = folder.filePath("schedule.mp4");
    const QString poster = folder.filePath("schedule.png");
    QString message;
    const Pfad::Error result = commands->RunCommand(
        L"KVXElement.KVX_EXPORT_SCHEDULE_VIDEO",
        {"out=" + film, "size=160x90", "seconds-per-day=0.05", "poster=" + poster}, &message);
    ASSERT_EQ(result, Pfad::eOk) << message.toStdString();
    // 58 days at 0.05 s: 2.9 s of schedule, the last day's frame and a second
    // of the finished site.
    const int frames = KVXScheduleVideo::FrameCount(58 * 0.05);
    EXPECT_EQ(frames, 69 + 1 + 24);
    const QString streams = probeVideo(film);
    EXPECT_TRUE(streams.contains("codec_name=h264")) << streams;
    EXPECT_TRUE(streams.contains("width=160")) << streams;
    EXPECT_TRUE(streams.contains("height=90")) << streams;
    EXPECT_TRUE(streams.contains("r_frame_rate=24/1")) << streams;
    EXPECT_TRUE(streams.contains(QString("nb_read_frames=%1").arg(frames))) << streams;
    EXPECT_EQ(QImage(poster).size(), QSize(160, 90));
    EXPECT_EQ(manager->getPlayState(), 0) << "the schedule is stopped afterwards";
}

TEST_F(DemoSchedule, aFilmThatCannotBeWrittenIsRefusedClearly)
{
    QString message;
    KVXScheduleVideo::Options options;
    options.file = QStringLiteral("/nonexistent-folder/schedule.mp4");
    options.width = 64;
    options.height = 48;
    EXPECT_FALSE(KVXScheduleVideo::Export(options, &message));
    EXPECT_TRUE(message.contains("/nonexistent-folder/schedule.mp4")) << message.toStdString();
    EXPECT_FALSE(QFile::exists(options.file));

    struct Words {
        QStringList words;
        const char* complaint;
    };
    const Words bad[] = {{{"size=64x48"}, "no video file"},
                         {{"out=a.mp4", "size=0x48"}, "size must be"},
                         {{"out=a.mp4", "size=5000x48"}, "size must be"},
                         {{"out=a.mp4", "seconds-per-day=-1"}, "seconds per day"},
                         {{"out=a.mp4", "fps=30"}, "unknown schedule video option"}};
    for (const Words& w : bad) {
        KVXScheduleVideo::Options parsed;
        QString why;
        EXPECT_FALSE(KVXScheduleVideo::ParseArguments(w.words, parsed, &why)) << w.complaint;
        EXPECT_TRUE(why.contains(w.complaint)) << why.toStdString();
    }
}

TEST_F(DemoSchedule, theCaptionShowsTheDateClocksDateAndChangesOnlyWithIt)
{
    EXPECT_EQ(KVXDateAnimationClockTimer::CaptionText(QDate(2025, 3, 15)), QStringLiteral("2025-03-15 星期六"));
    KVXDateAnimationClockTimer* dates = KVXScheduleDateClock::Get();
    ASSERT_NE(dates, nullptr);
    vpe::CCaption* caption = viewer->GetCaption();
    caption->SetVisible(true);
    dates->SetCaption(caption);
    manager->play();
    // The site hidden, so that only the caption can change the picture.
    viewer->GetScene()->GetTopNode()->setNodeMask(0u);
    const QRect box = caption->Area(kWidth, kHeight);
    QImage before;
    QString shown;
    for (int frame = 0; frame < 8; ++frame) {
        viewer->GetClock()->Tick(0.4);
        viewer->AdvanceFrame();
        QImage picture;
        ASSERT_TRUE(viewer->RenderFrame(picture));
        const QDate date = dates->DateForTime(dates->GetValue());
        EXPECT_EQ(caption->GetText(), KVXDateAnimationClockTimer::CaptionText(date)) << frame;
        EXPECT_NEAR(caption->GetProgress(), double(kFirstDay.daysTo(date)) / kFirstDay.daysTo(dates->GetEndDate()), 1e-9);
        const QImage band = picture.copy(box);
        if (frame > 0)
            EXPECT_EQ(imageDifference(band, before) > 0.0, caption->GetText() != shown) << "frame " << frame;
        before = band;
        shown = caption->GetText();
    }
    viewer->GetScene()->GetTopNode()->setNodeMask(~0u);
    dates->SetCaption(nullptr);
    caption->SetVisible(false);
}

TEST_F(DemoSchedule, theCaptionNamesTheCranesErectionClimbsAndDismantling)
{
    const struct {
        int day;
        const char* note;
    } days[] = {
        {1, ""},
        {2, "TC-1 塔吊 安装，高 32 m"},
        {4, "TC-1 塔吊 安装，高 32 m"},
        {5, ""},
        {12, "TC-1 塔吊 顶升至 38 m"},
        {36, "TC-1 塔吊 顶升至 62 m"},
        {57, "TC-1 塔吊 拆除"},
    };
    for (const auto& d : days)
        EXPECT_EQ(KVXScheduleEvents::NoteAt(kFirstDay.addDays(d.day), 3), QString::fromUtf8(d.note)) << d.day;
    // Climbs 6 m apart: the crane never jumps further between two frames.
    QList<KVXTowerLiftingData> steps;
    for (KVXAnimation* record : manager->getAnimationVector())
        if (auto* crane = KVXTowerAnimation::Cast(record))
            steps = crane->GetLiftingData();
    ASSERT_GE(steps.size(), 2);
    for (int i = 1; i < steps.size(); ++i)
        EXPECT_LE(steps[i].height - steps[i - 1].height, 6000) << i;
    EXPECT_EQ(KVXScheduleEvents::DaysShown(0.25), 8) << "two seconds of film";
    EXPECT_EQ(KVXScheduleEvents::DaysShown(5.0), 3);
}

TEST_F(DemoSchedule, filmsAndDatedPicturesCarryTheCaptionUnlessTurnedOff)
{
    QTemporaryDir folder;
    QColor corner[2];
    for (bool captioned : {false, true}) {
        KVXScheduleVideo::Options options;
        options.file = folder.filePath(QStringLiteral("film.mp4"));
        options.poster = folder.filePath(QStringLiteral("poster.png"));
        options.width = 320;
        options.height = 180;
        options.secondsPerDay = 0.02;
        options.caption = captioned;
        options.title = QStringLiteral("演示工地");
        QString error;
        ASSERT_TRUE(KVXScheduleVideo::Export(options, &error)) << error.toStdString();
        const QRect box = viewer->GetCaption()->Area(320, 180);
        corner[captioned] = QImage(options.poster).pixelColor(box.left() + 1, box.center().y());
        EXPECT_FALSE(viewer->GetCaption()->IsVisible()) << "put away after the film";
    }
    EXPECT_LT(corner[1].lightness(), corner[0].lightness() - 20) << "the band is in the captioned poster only";

    QString message;
    EXPECT_EQ(KVXScheduleVideo::RunShowDateCommand({"date=2025-03-20", "title=演示工地"}, &message), Pfad::eOk)
        << message.toStdString();
    EXPECT_EQ(viewer->GetCaption()->GetText(), QStringLiteral("2025-03-20 星期四"));
    EXPECT_TRUE(viewer->GetCaption()->IsVisible());
    EXPECT_EQ(manager->getPlayState(), 2) << "standing still on the date";
    EXPECT_EQ(KVXScheduleVideo::RunShowDateCommand({"date=2025-02-30"}, &message), Pfad::eInvalidInput);
    EXPECT_TRUE(message.contains("yyyy-MM-dd")) << message.toStdString();
    viewer->GetCaption()->SetVisible(false);
}

TEST_F(DemoSchedule, aFilmKilledHalfWayLeavesThePreviousVideoAsItWas)
{
    QTemporaryDir folder;
    const QString site = folder.filePath(QStringLiteral("site.kvx"));
    const QString film = folder.filePath(QStringLiteral("film.mp4"));
    ASSERT_TRUE(document->Save(site));
    QFile previous(film);
    ASSERT_TRUE(previous.open(QIODevice::WriteOnly) && previous.write("the film shown yesterday") > 0);
    previous.close();
    for (bool gently : {true, false}) {
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(QStringLiteral(KVX_HOST_PROGRAM),
                      {"play", site, "--out", film, "--size", "160x90", "--seconds-per-day", "2"});
        // Killed once the first tenth of the frames is done.
        while (!program.readAll().contains("[#") && program.waitForReadyRead(60000)) {
        }
        ASSERT_EQ(program.state(), QProcess::Running);
        if (gently)
            ::kill(static_cast<pid_t>(program.processId()), SIGINT);
        else
            program.kill();
        ASSERT_TRUE(program.waitForFinished(60000));
        ASSERT_TRUE(previous.open(QIODevice::ReadOnly));
        EXPECT_EQ(previous.readAll(), QByteArray("the film shown yesterday")) << (gently ? "SIGINT" : "SIGKILL");
        previous.close();
    }
}

} // namespace
