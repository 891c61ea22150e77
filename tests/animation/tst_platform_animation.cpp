#include "animation/KVXPlatformAnimationManager.h"
#include "animation/KVXTowerPlatformCallback.h"
#include "effects/KVXCraneRig.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfGsModelView.h"
#include "host/vpe/animation/CAnimation.h"
#include "host/vpe/animation/CAnimationManager.h"
#include "host/vpe/render/CViewer.h"

#include "host/net/PfCraneSimulator.h"
#include "host/net/PfPlatformReadingClient.h"
#include "host/vpe/scene/CCamera.h"

#include "tests/support/CommandLineRun.h"
#include "tests/support/FixedStepTimeSource.h"
#include "tests/support/VideoProbe.h"
#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

namespace {

QByteArray reply(double rotation, double heightMetres, int returnCode = 0, const char* device = "TC-001")
{
    return QStringLiteral("{\"returnCode\":%1,\"result\":{\"status\":{\"deviceId\":\"%2\"},\"attributeMap\":"
                          "{\"rotation\":{\"value\":%3},\"height\":{\"value\":%4}}}}")
        .arg(returnCode)
        .arg(QLatin1String(device))
        .arg(rotation)
        .arg(heightMetres)
        .toUtf8();
}

// A crane 60 m tall at (20 m, 6 m) in a document with a view, its clock
// moved by hand.
class PlatformAnimation : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        crane = new KVXTowerCraneObject();
        crane->SetPosition({20000.0, 6000.0, 0.0});
        crane->SetTowerHeight(60000);
        crane->SetJibLength(40000.0);
        document->GetDatabase()->GetModelSpace()->Add(crane);
        viewer = PfGsModelView::Attach(document)->GetViewer();
        viewer->SetTimeSource(new FixedStepTimeSource);
    }
    void TearDown() override
    {
        manager->stop();
        PfDocManagerPtr()->CloseAll();
    }
    // Where the jib's tip (straight along +x before any turn) points, degrees.
    double jibHeading() const
    {
        const osg::Matrixd jib = rig()->GetJibNode()->getMatrix();
        const osg::Vec3d foot(20000.0, 6000.0, 0.0);
        const osg::Vec3d tip = osg::Vec3d(30000.0, 6000.0, 0.0) * jib - foot * jib;
        return osg::RadiansToDegrees(std::atan2(tip.y(), tip.x()));
    }
    double raise() const { return rig()->GetUpperNode()->getMatrix().getTrans().z(); }
    const KVXCraneRig* rig() const
    {
        auto* animation = viewer->GetAnimationManager()->FindAnimation(std::to_string(crane->GetHandle()));
        auto* callback = animation ? dynamic_cast<KVXTowerPlatformCallback*>(animation->GetFrameCallback()) : nullptr;
        return callback ? callback->GetRig() : nullptr;
    }
    void frameAt(double seconds)
    {
        viewer->GetClock()->Tick(seconds - clock);
        clock = seconds;
        viewer->AdvanceFrame();
    }

    KVXPlatformAnimationManager* manager = KVXPlatformAnimationManager::getInstance();
    PfDbDocument* document = nullptr;
    KVXTowerCraneObject* crane = nullptr;
    vpe::CViewer* viewer = nullptr;
    double clock = 0.0;
};

TEST_F(PlatformAnimation, cranesStayAsModelledUntilTheFirstReading)
{
    QSignalSpy requests(manager, &KVXPlatformAnimationManager::requestData);
    QSignalSpy playing(manager, &KVXPlatformAnimationManager::isPalyingSignal);
    manager->play();
    EXPECT_EQ(manager->getPlayingState(), KVXPlatformAnimationManager::Playing);
    EXPECT_EQ(requests.count(), 1) << "asked for a reading at once";
    ASSERT_EQ(playing.count(), 1);
    EXPECT_TRUE(playing.at(0).at(0).toBool());
    ASSERT_NE(rig(), nullptr);
    frameAt(1.0);
    EXPECT_TRUE(manager->getAnimationDataFromTower(crane).deviceId.isEmpty());
    EXPECT_EQ(raise(), 0.0);
    EXPECT_NEAR(jibHeading(), 0.0, 1e-9);
}

TEST_F(PlatformAnimation, aReadingRaisesTheCraneAndTurnsTheJibOverFiveSeconds)
{
    manager->play();
    frameAt(10.0);
    manager->setPlatformTowerData(reply(0.0, 46.0));
    frameAt(10.5);
    EXPECT_EQ(manager->getAnimationDataFromTower(crane).deviceId, QStringLiteral("TC-001"));
    EXPECT_NEAR(raise(), -14000.0, 1e-6) << "46 m reported, 60 m modelled";
    manager->setPlatformTowerData(reply(90.0, 46.0));
    // The turn follows the five-second phase of the clock.
    for (const auto& [time, heading] : {std::pair{12.5, 45.0}, {14.0, 72.0}, {14.9, 88.2}}) {
        frameAt(time);
        EXPECT_NEAR(jibHeading(), heading, 0.01) << time;
    }
    // The phase starts again at 15 s, but the turn never shrinks.
    frameAt(15.5);
    EXPECT_NEAR(jibHeading(), 88.2, 0.01);
    // The same angle again: no turn from there.
    manager->setPlatformTowerData(reply(90.0, 46.0));
    frameAt(17.0);
    EXPECT_NEAR(jibHeading(), 90.0, 0.01);
}

TEST_F(PlatformAnimation, repliesThatAreNoGoodReadingAreIgnored)
{
    manager->play();
    manager->setPlatformTowerData(reply(30.0, 50.0));
    const QByteArray ignored[] = {
        reply(60.0, 55.0, 7),
        "{\"returnCode\":0,\"result\":{}}",
        "[1, 2, 3]",
        "{\"returnCode\":0,\"result\":{\"status\":{\"deviceId\":\"\xff\xfe\"}}",
        QByteArray(10 * 1024 * 1024, ' ') + "{",
        reply(1e308, 40.0),
        reply(0.0, 1e12),
        "",
    };
    for (const QByteArray& body : ignored) {
        SCOPED_TRACE(body.left(60).toStdString());
        manager->setPlatformTowerData(body);
        const KVXPlatformTowerAnimationData data = manager->getAnimationDataFromTower(crane);
        EXPECT_EQ(data.rotation, 30.0f);
        EXPECT_EQ(data.height, 50000.0f);
    }
    // Present but incomplete: what is missing reads as empty or 0.
    manager->setPlatformTowerData("{\"returnCode\":0,\"result\":{\"attributeMap\":{\"rotation\":{\"value\":12}}}}");
    const KVXPlatformTowerAnimationData partial = manager->getAnimationDataFromTower(crane);
    EXPECT_TRUE(partial.deviceId.isEmpty());
    EXPECT_EQ(partial.rotation, 12.0f);
    EXPECT_EQ(partial.height, 0.0f);
}

TEST_F(PlatformAnimation, pauseStopsAskingAndStopPutsTheCraneBack)
{
    manager->play();
    QSignalSpy playing(manager, &KVXPlatformAnimationManager::isPalyingSignal);
    manager->pause();
    EXPECT_EQ(manager->getPlayingState(), KVXPlatformAnimationManager::Paused);
    manager->pause();
    EXPECT_EQ(manager->getPlayingState(), KVXPlatformAnimationManager::Playing);
    manager->stop();
    EXPECT_EQ(manager->getPlayingState(), KVXPlatformAnimationManager::Stopped);
    ASSERT_EQ(playing.count(), 3);
    EXPECT_FALSE(playing.at(0).at(0).toBool());
    EXPECT_TRUE(playing.at(1).at(0).toBool());
    EXPECT_FALSE(playing.at(2).at(0).toBool());
    EXPECT_EQ(rig(), nullptr) << "the live animation is gone";
    EXPECT_EQ(manager->getAnimationDataFromTower(crane).deviceId, QString());
    EXPECT_EQ(crane->GetBeingAnimated(), 0);
}

TEST_F(PlatformAnimation, throughTheRealHttpPathTheJibPointsWhereTheReadingSays)
{
    PfCraneSimulator simulator;
    simulator.SetScript({{90.0, 46.0}});
    ASSERT_TRUE(simulator.Listen(0));
    PfPlatformReadingClient client;
    client.SetEndpoint(QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(simulator.Port())));
    QObject::connect(manager, &KVXPlatformAnimationManager::requestData, &client, &PfPlatformReadingClient::Request);
    QObject::connect(&client, &PfPlatformReadingClient::ReadingReceived, manager,
                     &KVXPlatformAnimationManager::setPlatformTowerData);
    const auto waitForReading = [&] {
        while (client.IsWaiting())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    };
    manager->play(); // asks at once
    waitForReading();
    frameAt(1.0);
    // The same reading again: the jib stands at 90 degrees, turned no more.
    client.Request();
    waitForReading();
    frameAt(2.0);
    EXPECT_NEAR(jibHeading(), 90.0, 1e-3);

    // From straight above: the jib's lattice runs north of the mast, not east.
    vpe::CRefPtr<vpe::CCamera> above = new vpe::CCamera;
    above->SetProjectionType(vpe::CCamera::Orthographic);
    above->SetPosition({20000.0f, 6000.0f, 200000.0f});
    above->SetDirection({0.0f, 0.0f, -1.0f});
    above->SetUpDirection({0.0f, 1.0f, 0.0f});
    above->SetOrthoWindowHeight(100000.0f);
    QImage picture;
    ASSERT_TRUE(viewer->RenderImage(*above, 200, 200, picture));
    const auto craneColoured = [&picture](int x, int y) {
        const QRgb c = picture.pixel(x, y);
        return qRed(c) > 120 && qGreen(c) > 80 && qBlue(c) < 90;
    };
    int north = 0, east = 0;
    for (int along = 20; along < 70; ++along) {
        north += craneColoured(100, 100 - along) || craneColoured(99, 100 - along) || craneColoured(101, 100 - along);
        east += craneColoured(100 + along, 100) || craneColoured(100 + along, 99) || craneColoured(100 + along, 101);
    }
    EXPECT_GT(north, 40) << "the jib along the reported 90 degrees";
    EXPECT_LT(east, 5);
    // The upper works stand on the mast cut at the reported 46 m.
    EXPECT_NEAR(raise(), 46000.0 - 60000.0, 1e-6);
}

TEST(LiveCraneFilm, filmsTheCranesFollowingTheSimulatedPlatform)
{
    QTemporaryDir folder;
    const QString site = folder.filePath(QStringLiteral("site.kvx"));
    ASSERT_EQ(runCommandLine({"demo-site", "--out", site}).code, 0);
    PfCraneSimulator simulator;
    simulator.SetScript({{0.0, 40.0}, {90.0, 46.0}});
    ASSERT_TRUE(simulator.Listen(0));
    const QString endpoint = QStringLiteral("http://127.0.0.1:%1/latest").arg(simulator.Port());
    const QString video = folder.filePath(QStringLiteral("live.mp4"));
    const Outcome filmed = runCommandLine(
        {"live", site, "--endpoint", endpoint, "--out", video, "--seconds", "6", "--size", "96x54"});
    ASSERT_EQ(filmed.code, 0) << filmed.err;
    EXPECT_EQ(simulator.Answered(), 2) << "a reading at the start and after five seconds of film";
    EXPECT_TRUE(probeVideo(video).contains(QLatin1String("nb_read_frames=144"))) << probeVideo(video);
    EXPECT_EQ(KVXPlatformAnimationManager::getInstance()->getPlayingState(), KVXPlatformAnimationManager::Stopped);

    const struct {
        QStringList arguments;
        int code;
        const char* message;
    } refused[] = {
        {{"live", site, "--out", video}, 2, "live wants --endpoint"},
        {{"live", site, "--endpoint", "ftp://x/", "--out", video}, 2, "http:// or https://"},
        {{"live", site, "--endpoint", endpoint, "--out", video, "--seconds", "0"}, 2, "--seconds wants"},
        {{"live", site, "--endpoint", endpoint, "--out", video, "--header", "no header"}, 1, "Name: value"},
    };
    for (const auto& r : refused) {
        SCOPED_TRACE(r.arguments.join(' ').toStdString());
        const Outcome outcome = runCommandLine(r.arguments);
        EXPECT_EQ(outcome.code, r.code);
        EXPECT_TRUE(outcome.err.contains(QLatin1String(r.message))) << outcome.err;
    }
}

} // namespace
