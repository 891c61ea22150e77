#include "KVXScheduleVideo.h"

#include "KVXAnimatorManager.h"

#include "host/model/PfGsUtility.h"
#include "host/model/PfProgressMeter.h"
#include "host/vpe/animation/CTimeSource.h"
#include "host/vpe/video/CVideoMakerFFmpegPlugin.h"
#include "host/vpe/animation/CVideoRecorderTimeSource.h"
#include "host/vpe/render/CViewer.h"

#include <QCoreApplication>
#include <QFile>

#include <cmath>

const wchar_t* const KVXScheduleVideo::kCommandName = L"KVX_EXPORT_SCHEDULE_VIDEO";

namespace {

constexpr int kMaxSide = 4094;
// The poster shows the site this far through the schedule.
constexpr double kPosterShare = 0.6;

bool parseSize(const QString& text, int& width, int& height)
{
    const QStringList parts = text.split(QLatin1Char('x'));
    bool okWidth = false;
    bool okHeight = false;
    if (parts.size() == 2) {
        width = parts[0].toInt(&okWidth);
        height = parts[1].toInt(&okHeight);
    }
    return okWidth && okHeight && width > 0 && height > 0 && width <= kMaxSide && height <= kMaxSide;
}

bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

} // namespace

bool KVXScheduleVideo::ParseArguments(const QStringList& arguments, Options& options, QString* error)
{
    for (const QString& word : arguments) {
        const int equals = word.indexOf(QLatin1Char('='));
        const QString key = word.left(equals);
        const QString value = equals < 0 ? QString() : word.mid(equals + 1);
        if (key == QLatin1String("out") && !value.isEmpty()) {
            options.file = value;
        } else if (key == QLatin1String("poster") && !value.isEmpty()) {
            options.poster = value;
        } else if (key == QLatin1String("size")) {
            if (!parseSize(value, options.width, options.height))
                return fail(error, QStringLiteral("size must be WIDTHxHEIGHT, 1 to %1 pixels a side: %2")
                                       .arg(kMaxSide)
                                       .arg(value));
        } else if (key == QLatin1String("seconds-per-day")) {
            bool ok = false;
            options.secondsPerDay = value.toDouble(&ok);
            if (!ok || !(options.secondsPerDay > 0.0) || options.secondsPerDay > 3600.0)
                return fail(error, QStringLiteral("seconds per day must be a number above 0: %1").arg(value));
        } else {
            return fail(error, QStringLiteral("unknown schedule video option: %1").arg(word));
        }
    }
    if (options.file.isEmpty())
        return fail(error, QStringLiteral("no video file given (out=FILE.mp4)"));
    return true;
}

Pfad::Error KVXScheduleVideo::RunCommand(const QStringList& arguments, QString* message)
{
    Options options;
    if (!ParseArguments(arguments, options, message))
        return Pfad::eInvalidInput;
    return Export(options, message) ? Pfad::eOk : Pfad::eInvalidInput;
}

int KVXScheduleVideo::FrameCount(double scheduleSeconds)
{
    return static_cast<int>(std::floor(scheduleSeconds * kFramesPerSecond)) + 1 + static_cast<int>(kFramesPerSecond);
}

bool KVXScheduleVideo::Export(const Options& options, QString* error)
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return fail(error, QStringLiteral("no document is shown: there is nothing to film"));
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    const double keptScale = schedule->getDayToSeconds();
    schedule->setDayToSeconds(options.secondsPerDay);
    schedule->updateAllAnimationsDateRange();
    const double length = schedule->getAllAnimationsTimeLength();
    if (schedule->getAnimationVector().empty() || length <= 0.01) {
        schedule->setDayToSeconds(keptScale);
        return fail(error, QStringLiteral("the document has no schedule to play"));
    }
    vpe::CVideoMakerFFmpegPlugin::LoadPlugin();
    viewer->SetActiveViewportSize(options.width, options.height);
    vpe::CVideoRecorder* recorder = viewer->GetAnimationManager()->GetOrCreateVideoRecorder();
    recorder->SetFileName(options.file);
    recorder->SetFrameRate(kFramesPerSecond);
    recorder->SetResolution(options.width, options.height);
    QString reason;
    if (!recorder->RecordBegin(0.0, &reason)) {
        schedule->setDayToSeconds(keptScale);
        return fail(error, reason);
    }
    // Every frame moves the clocks by exactly one frame, however long it
    // takes to draw.
    const vpe::CRefPtr<vpe::CTimeSource> keptSource = viewer->GetTimeSource();
    viewer->SetTimeSource(new vpe::CVideoRecorderTimeSource(kFramesPerSecond));
    // The film shows the site, not the editor's labels.
    schedule->setSignsVisible(false);
    schedule->play();

    const int frames = FrameCount(length);
    const int posterFrame = static_cast<int>(frames * kPosterShare);
    PfProgressMeter progress;
    progress.Start(QStringLiteral("导出视频"), frames);
    QImage picture;
    bool drawn = true;
    for (int frame = 0; frame < frames && drawn && recorder->IsRecording(); ++frame) {
        drawn = viewer->Frame(picture, &reason);
        if (drawn && frame == posterFrame && !options.poster.isEmpty() && !picture.save(options.poster)) {
            reason = QStringLiteral("cannot write the poster %1").arg(options.poster);
            drawn = false;
        }
        progress.Step();
    }
    progress.Stop();
    if (drawn && !recorder->IsRecording()) {
        reason = recorder->LastError();
        drawn = false;
    }
    recorder->RecordEnd(frames / double(kFramesPerSecond));
    const bool finished = viewer->GetVideoMaker()->Finish(drawn ? &reason : nullptr);
    schedule->stop();
    schedule->resumeScene();
    schedule->setSignsVisible(true);
    viewer->SetTimeSource(keptSource.get());
    schedule->setDayToSeconds(keptScale);
    if (!drawn || !finished) {
        QFile::remove(options.file);
        return fail(error, reason);
    }
    return true;
}
