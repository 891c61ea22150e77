#include "KVXScheduleVideo.h"

#include "KVXAnimatorManager.h"
#include "KVXScheduleEvents.h"
#include "keyframe/KVXDateAnimationClockTimer.h"
#include "keyframe/KVXScheduleDateClock.h"

#include "host/model/PfGsUtility.h"
#include "host/model/PfProgressMeter.h"
#include "host/vpe/animation/CTimeSource.h"
#include "host/vpe/animation/CVideoRecorderTimeSource.h"
#include "host/vpe/render/CPictureFile.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CCaption.h"
#include "host/vpe/video/CVideoMakerFFmpegPlugin.h"
#include "host/vpe/video/ZVideoFFmpeg.h"

#include <QCoreApplication>

#include <cmath>

const wchar_t* const KVXScheduleVideo::kCommandName = L"KVX_EXPORT_SCHEDULE_VIDEO";
const wchar_t* const KVXScheduleVideo::kShowDateCommandName = L"KVX_SHOW_SCHEDULE_AT";

namespace {

// The encoder's limit.
constexpr int kMaxSide = ZVideoFFmpeg::kMaxSide;
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

Pfad::Error refuse(QString* message, const QString& reason, Pfad::Error code = Pfad::eInvalidInput)
{
    fail(message, reason);
    return code;
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
        } else if (key == QLatin1String("title")) {
            options.title = value;
        } else if (word == QLatin1String("caption=off")) {
            options.caption = false;
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
    return Export(options, message) ? Pfad::eOk : Pfad::eNotApplicable;
}

Pfad::Error KVXScheduleVideo::RunShowDateCommand(const QStringList& arguments, QString* message)
{
    QDate date;
    QString title;
    bool caption = true;
    for (const QString& word : arguments) {
        const QString value = word.section(QLatin1Char('='), 1);
        if (word.startsWith(QLatin1String("date="))) {
            date = QDate::fromString(value, QStringLiteral("yyyy-MM-dd"));
            if (!date.isValid())
                return refuse(message, QStringLiteral("the date wants yyyy-MM-dd, not \"%1\"").arg(value));
        } else if (word.startsWith(QLatin1String("title="))) {
            title = value;
        } else if (word == QLatin1String("caption=off")) {
            caption = false;
        } else {
            return refuse(message, QStringLiteral("unknown word \"%1\"").arg(word));
        }
    }
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    schedule->updateAllAnimationsDateRange();
    if (!viewer || !date.isValid() || schedule->getAnimationVector().empty())
        return refuse(message, QStringLiteral("the document has no schedule to show on a date"), Pfad::eNotApplicable);
    schedule->setSignsVisible(false);
    schedule->playAnimationAtDate(date);
    // A date is shown on the frames that follow the jump.
    viewer->AdvanceFrame();
    viewer->AdvanceFrame();
    KVXDateAnimationClockTimer* dates = KVXScheduleDateClock::Get();
    if (caption && dates) {
        vpe::CCaption* shown = viewer->GetCaption();
        shown->SetTitle(title);
        // A still shows the events of the day and the two before it.
        dates->SetCaptionNote([](const QDate& day) { return KVXScheduleEvents::NoteAt(day, 3); });
        dates->ShowDateOn(shown, date);
        dates->SetCaptionNote(nullptr);
        shown->SetVisible(true);
    }
    return Pfad::eOk;
}

int KVXScheduleVideo::FrameCount(double scheduleSeconds)
{
    return static_cast<int>(std::floor(scheduleSeconds * kFramesPerSecond)) + 1 + static_cast<int>(kFramesPerSecond);
}

namespace {

// The schedule as a film needs it: played at the film's speed, on a time
// source that moves exactly one frame per frame, without the editor's
// labels. However the export ends, the session leaves the schedule stopped,
// the model put back and speed, time source and labels as it found them.
class FilmingSession {
public:
    FilmingSession(vpe::CViewer* viewer, KVXAnimatorManager* schedule, double secondsPerDay)
        : m_viewer(viewer), m_schedule(schedule), m_keptScale(schedule->getDayToSeconds())
    {
        schedule->setDayToSeconds(secondsPerDay);
        schedule->updateAllAnimationsDateRange();
    }
    ~FilmingSession()
    {
        if (m_dates) {
            m_dates->SetCaption(nullptr);
            m_dates->SetCaptionNote(nullptr);
            m_viewer->GetCaption()->SetVisible(false);
        }
        if (m_playing) {
            m_schedule->stop();
            m_schedule->resumeScene();
            m_schedule->setSignsVisible(true);
            m_viewer->SetTimeSource(m_keptSource.get());
        }
        m_schedule->setDayToSeconds(m_keptScale);
    }
    FilmingSession(const FilmingSession&) = delete;
    FilmingSession& operator=(const FilmingSession&) = delete;

    // The schedule's date on every frame, under the title.
    void ShowCaption(const QString& title)
    {
        m_dates = KVXScheduleDateClock::Get();
        if (!m_dates)
            return;
        vpe::CCaption* caption = m_viewer->GetCaption();
        caption->SetTitle(title);
        const int days = KVXScheduleEvents::DaysShown(m_schedule->getDayToSeconds());
        m_dates->SetCaptionNote([days](const QDate& date) { return KVXScheduleEvents::NoteAt(date, days); });
        m_dates->ShowDateOn(caption, m_schedule->getAllAnimationsStartDate());
        caption->SetVisible(true);
        m_dates->SetCaption(caption);
    }
    void Play()
    {
        m_keptSource = m_viewer->GetTimeSource();
        m_viewer->SetTimeSource(new vpe::CVideoRecorderTimeSource(KVXScheduleVideo::kFramesPerSecond));
        m_schedule->setSignsVisible(false);
        m_schedule->play();
        m_playing = true;
    }

private:
    vpe::CViewer* m_viewer;
    KVXAnimatorManager* m_schedule;
    double m_keptScale;
    vpe::CRefPtr<vpe::CTimeSource> m_keptSource;
    vpe::CRefPtr<KVXDateAnimationClockTimer> m_dates;
    bool m_playing = false;
};

// Draws and encodes every frame, the poster among them; false with the
// reason when a frame cannot be drawn or the poster written.
bool filmFrames(vpe::CViewer* viewer, vpe::CVideoRecorder* recorder, int frames, const QString& poster,
                QString& reason)
{
    const int posterFrame = static_cast<int>(frames * kPosterShare);
    PfProgressMeter progress;
    progress.Start(QStringLiteral("导出视频"), frames);
    QImage picture;
    bool drawn = true;
    for (int frame = 0; frame < frames && drawn && recorder->IsRecording(); ++frame) {
        drawn = viewer->Frame(picture, &reason);
        if (drawn && frame == posterFrame && !poster.isEmpty())
            drawn = vpe::CPictureFile::Save(picture, poster, &reason);
        progress.Step();
    }
    progress.Stop();
    if (drawn && !recorder->IsRecording()) {
        reason = recorder->LastError();
        drawn = false;
    }
    return drawn;
}

} // namespace

bool KVXScheduleVideo::Export(const Options& options, QString* error)
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return fail(error, QStringLiteral("no document is shown: there is nothing to film"));
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    FilmingSession session(viewer, schedule, options.secondsPerDay);
    const double length = schedule->getAllAnimationsTimeLength();
    if (schedule->getAnimationVector().empty())
        return fail(error, QStringLiteral("the document has no schedule to play"));
    if (length * kFramesPerSecond < 1.0)
        return fail(error, QStringLiteral("at %1 s a day the schedule passes in less than a frame: nothing to film")
                               .arg(options.secondsPerDay));
    // A poster that cannot be written is found out now, not 60 % through.
    if (!options.poster.isEmpty() && !vpe::CPictureFile::CanWrite(options.poster, error))
        return false;
    vpe::CVideoMakerFFmpegPlugin::LoadPlugin();
    viewer->SetActiveViewportSize(options.width, options.height);
    vpe::CVideoRecorder* recorder = viewer->GetAnimationManager()->GetOrCreateVideoRecorder();
    recorder->SetFileName(options.file);
    recorder->SetFrameRate(kFramesPerSecond);
    recorder->SetResolution(options.width, options.height);
    QString reason;
    if (!recorder->RecordBegin(0.0, &reason))
        return fail(error, reason);
    if (options.caption)
        session.ShowCaption(options.title);
    session.Play();
    const int frames = FrameCount(length);
    const bool drawn = filmFrames(viewer, recorder, frames, options.poster, reason);
    recorder->RecordEnd(frames / double(kFramesPerSecond));
    // A film that failed half-way is dropped; a file of that name from
    // before stays as it was.
    const bool finished = drawn && viewer->GetVideoMaker()->Finish(&reason);
    if (!finished) {
        viewer->GetVideoMaker()->Cancel();
        return fail(error, reason);
    }
    return true;
}
