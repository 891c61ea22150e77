#include "KVXLiveCraneFilm.h"

#include "KVXPlatformAnimationManager.h"

#include "keyframe/KVXVideoSettings.h"

#include "host/model/PfGsUtility.h"
#include "host/model/PfProgressMeter.h"
#include "host/net/PfPlatformReadingClient.h"
#include "host/vpe/animation/CVideoRecorderTimeSource.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CCaption.h"
#include "host/vpe/video/CVideoMakerFFmpegPlugin.h"
#include "host/vpe/video/CVideoRecorder.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTime>
#include <QUrl>

#include <cmath>

const wchar_t* const KVXLiveCraneFilm::kCommandName = L"KVX_FILM_LIVE_CRANES";

namespace {

// Film seconds between two readings, as the platform is asked.
constexpr int kReadingEvery = 5;
// Real time the film waits for one reading, milliseconds.
constexpr int kReadingWait = 5000;

Pfad::Error refuse(QString* message, const QString& reason, Pfad::Error code = Pfad::eInvalidInput)
{
    if (message)
        *message = reason;
    return code;
}

bool parseSize(const QString& text, KVXLiveCraneFilm::Options& options)
{
    unsigned int width = 0, height = 0;
    if (!KVXVideoSettings::ParseResolution(text, width, height))
        return false;
    options.width = static_cast<int>(width);
    options.height = static_cast<int>(height);
    return true;
}

} // namespace

QString KVXLiveCraneFilm::ReadingText(const QString& device, double rotation, double heightMillimetres,
                                      const QString& receivedAt)
{
    return QStringLiteral("%1 · 回转 %2° · 高度 %3 m · %4")
        .arg(device)
        .arg(rotation, 0, 'f', 0)
        .arg(heightMillimetres / 1000.0, 0, 'f', 1)
        .arg(receivedAt);
}

Pfad::Error KVXLiveCraneFilm::RunCommand(const QStringList& arguments, QString* message)
{
    Options options;
    for (const QString& word : arguments) {
        const QString key = word.section(QLatin1Char('='), 0, 0);
        const QString value = word.section(QLatin1Char('='), 1);
        bool ok = true;
        if (key == QLatin1String("endpoint"))
            options.endpoint = value;
        else if (key == QLatin1String("header"))
            options.header = value;
        else if (key == QLatin1String("out"))
            options.file = value;
        else if (key == QLatin1String("title"))
            options.title = value;
        else if (word == QLatin1String("caption=off"))
            options.caption = false;
        else if (key == QLatin1String("size"))
            ok = parseSize(value, options);
        else if (key == QLatin1String("seconds"))
            options.seconds = value.toDouble(&ok), ok = ok && options.seconds > 0.0 && options.seconds <= 3600.0;
        else
            ok = false;
        if (!ok)
            return refuse(message, QStringLiteral("live film word not understood or out of range: %1").arg(word));
    }
    const QUrl endpoint(options.endpoint);
    if (!endpoint.isValid() || endpoint.isRelative() ||
        (endpoint.scheme() != QLatin1String("http") && endpoint.scheme() != QLatin1String("https")))
        return refuse(message, QStringLiteral("the endpoint wants an http:// or https:// address, not \"%1\"")
                                   .arg(options.endpoint));
    if (options.file.isEmpty())
        return refuse(message, QStringLiteral("no video file given (out=FILE.mp4)"));
    return Film(options, message) ? Pfad::eOk : Pfad::eNotApplicable;
}

bool KVXLiveCraneFilm::Film(const Options& options, QString* error)
{
    const auto fail = [error](const QString& reason) {
        if (error)
            *error = reason;
        return false;
    };
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return fail(QStringLiteral("no document is shown: there is nothing to film"));
    PfPlatformReadingClient client;
    client.SetEndpoint(QUrl(options.endpoint));
    if (!client.SetAccessHeader(options.header))
        return fail(QStringLiteral("the access header wants \"Name: value\", not \"%1\"").arg(options.header));
    KVXPlatformAnimationManager* manager = KVXPlatformAnimationManager::getInstance();
    QString receivedAt;
    QObject::connect(&client, &PfPlatformReadingClient::ReadingReceived, manager,
                     [manager, &receivedAt](const QByteArray& reply) {
                         manager->setPlatformTowerData(reply);
                         receivedAt = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
                     });
    manager->play();
    if (manager->getTowerCount() == 0) {
        manager->stop();
        return fail(QStringLiteral("the document has no tower crane to follow"));
    }
    vpe::CVideoMakerFFmpegPlugin::LoadPlugin();
    viewer->SetActiveViewportSize(options.width, options.height);
    const vpe::CRefPtr<vpe::CTimeSource> keptSource = viewer->GetTimeSource();
    viewer->SetTimeSource(new vpe::CVideoRecorderTimeSource(kFramesPerSecond));
    vpe::CVideoRecorder* recorder = viewer->GetAnimationManager()->GetOrCreateVideoRecorder();
    recorder->SetFileName(options.file);
    recorder->SetFrameRate(kFramesPerSecond);
    recorder->SetResolution(options.width, options.height);
    QString reason;
    if (!recorder->RecordBegin(0.0, &reason)) {
        manager->stop();
        viewer->SetTimeSource(keptSource.get());
        return fail(reason);
    }
    vpe::CCaption* caption = viewer->GetCaption();
    caption->SetTitle(options.title);
    caption->SetVisible(options.caption);
    const int frames = static_cast<int>(std::ceil(options.seconds * kFramesPerSecond));
    PfProgressMeter progress;
    progress.Start(QStringLiteral("导出视频"), frames);
    QImage picture;
    bool drawn = true;
    for (int frame = 0; frame < frames && drawn && recorder->IsRecording(); ++frame) {
        if (frame % (kReadingEvery * static_cast<int>(kFramesPerSecond)) == 0) {
            client.Request();
            QElapsedTimer waited;
            waited.start();
            while (client.IsWaiting() && waited.elapsed() < kReadingWait)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        }
        const KVXPlatformTowerAnimationData& reading = manager->getCurrentData();
        caption->SetText(receivedAt.isEmpty() ? QStringLiteral("等待塔吊数据") + QStringLiteral(" · ") + client.LastProblem()
                                              : ReadingText(reading.deviceId, reading.rotation, reading.height, receivedAt));
        caption->SetProgress(double(frame) / frames);
        drawn = viewer->Frame(picture, &reason);
        progress.Step();
    }
    progress.Stop();
    if (drawn && !recorder->IsRecording()) {
        drawn = false;
        reason = recorder->LastError();
    }
    manager->stop();
    caption->SetVisible(false);
    recorder->RecordEnd(frames / double(kFramesPerSecond));
    viewer->SetTimeSource(keptSource.get());
    if (!drawn || !viewer->GetVideoMaker()->Finish(&reason)) {
        viewer->GetVideoMaker()->Cancel();
        return fail(reason);
    }
    return true;
}
