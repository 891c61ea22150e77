#include "host/model/PfStatusBarTip.h"
#include "host/net/PfCraneSimulator.h"
#include "host/net/PfPlatformReadingClient.h"

#include "tests/support/QtPrinters.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTcpServer>

#include <gtest/gtest.h>

#include <memory>

namespace {

// A client asking a simulator on the loopback address; each request is
// waited for through the event loop, never by the clock.
class PlatformReading : public ::testing::Test {
protected:
    void SetUp() override { restart(); }
    // A fresh simulator, counting from its first reading.
    void restart()
    {
        simulator = std::make_unique<PfCraneSimulator>();
        ASSERT_TRUE(simulator->Listen(0));
        client.SetEndpoint(QUrl(QStringLiteral("http://127.0.0.1:%1/devices/TC-1/latest").arg(simulator->Port())));
    }
    // One request answered (or failed): what came back.
    void ask()
    {
        QSignalSpy done(&client, &PfPlatformReadingClient::ReadingReceived);
        client.Request();
        while (client.IsWaiting())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        for (const QList<QVariant>& reading : done)
            readings << reading.at(0).toByteArray();
    }

    std::unique_ptr<PfCraneSimulator> simulator;
    PfPlatformReadingClient client;
    QList<QByteArray> readings;
};

TEST_F(PlatformReading, theSimulatorSlewsAndClimbsByDefault)
{
    for (int i = 0; i < 3; ++i)
        ask();
    ASSERT_EQ(readings.size(), 3);
    const QJsonObject third = QJsonDocument::fromJson(readings[2]).object();
    const QJsonObject attributes = third["result"].toObject()["attributeMap"].toObject();
    EXPECT_EQ(third["returnCode"].toInt(), 0);
    EXPECT_EQ(attributes["rotation"].toObject()["value"].toDouble(), 30.0);
    EXPECT_EQ(attributes["height"].toObject()["value"].toDouble(), 30.0);
    EXPECT_EQ(PfCraneSimulator::PatternReading(12).height, 36.0) << "a 6 m climb every twelve readings";
    EXPECT_EQ(PfCraneSimulator::PatternReading(15).rotation, 75.0) << "and back";
    EXPECT_TRUE(client.LastProblem().isEmpty());
}

TEST_F(PlatformReading, failuresAreToldOnceAndAGoodReplyClearsThem)
{
    using Reading = PfCraneSimulator::Reading;
    const struct {
        Reading reading;
        const char* problem;
    } cases[] = {
        {{0, 0, 3, 200, {}}, "the platform answered returnCode 3"},
        {{0, 0, 0, 404, {}}, "answered HTTP 404"},
        {{0, 0, 0, 200, "not json"}, "the reply is not JSON"},
        {{0, 0, 0, 200, "[1,2]"}, "the reply is not a JSON object"},
        {{0, 0, 0, 200, "{\"returnCode\":0,\"result\":{}}"}, "the reply has no result"},
        {{0, 0, 0, 200, "{\"result\":{\"a\":1}}"}, "the reply has no returnCode"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.problem);
        simulator->SetScript({c.reading, c.reading, Reading{45.0, 36.0}});
        QSignalSpy told(&client, &PfPlatformReadingClient::ProblemOccurred);
        readings.clear();
        ask();
        ask();
        EXPECT_EQ(told.count(), 1) << "the same failure twice is told once";
        EXPECT_TRUE(client.LastProblem().contains(QLatin1String(c.problem))) << client.LastProblem().toStdString();
        EXPECT_TRUE(PfStatusBarTip::Current().startsWith(QLatin1String("live cranes: ")));
        EXPECT_TRUE(readings.isEmpty());
        ask();
        EXPECT_EQ(readings.size(), 1);
        EXPECT_TRUE(client.LastProblem().isEmpty());
        restart();
    }
}

TEST_F(PlatformReading, aLateReplyIsDroppedWhenTheNextIsDueAndRequestsNeverOverlap)
{
    simulator->SetDelay(-1);
    QSignalSpy told(&client, &PfPlatformReadingClient::ProblemOccurred);
    client.Request();
    EXPECT_TRUE(client.IsWaiting());
    client.Request();
    EXPECT_TRUE(client.LastProblem().startsWith(QLatin1String("no answer from"))) << client.LastProblem().toStdString();
    EXPECT_EQ(told.count(), 1);
    EXPECT_TRUE(client.IsWaiting()) << "one request out, the late one dropped";
}

TEST_F(PlatformReading, refusedConnectionsAndDamagedOrHugeBodiesAreFailures)
{
    simulator->SetDamaged(true);
    ask();
    EXPECT_TRUE(client.LastProblem().startsWith(QLatin1String("the reply is not JSON")));
    simulator->SetDamaged(false);
    simulator->SetScript({PfCraneSimulator::Reading{0, 0, 0, 200, QByteArray(3 * 1024 * 1024, ' ')}});
    ask();
    EXPECT_TRUE(client.LastProblem().startsWith(QLatin1String("the reply is larger than"))) << client.LastProblem().toStdString();

    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost, 0));
    const quint16 port = closed.serverPort();
    closed.close();
    client.SetEndpoint(QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(port)));
    ask();
    EXPECT_TRUE(client.LastProblem().contains(QLatin1String("refused"))) << client.LastProblem().toStdString();
    EXPECT_TRUE(readings.isEmpty());
    EXPECT_FALSE(client.SetAccessHeader(QStringLiteral("no header here")));
    EXPECT_TRUE(client.SetAccessHeader(QStringLiteral("Authorization: Bearer abc")));
}

} // namespace
