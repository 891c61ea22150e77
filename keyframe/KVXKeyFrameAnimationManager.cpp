#include "KVXKeyFrameAnimationManager.h"

#include "KVXCameraAnimationClockTimer.h"
#include "KVXCameraKeyFramesTrack.h"
#include "KVXCameraPlayAnimable.h"
#include "KVXDateAnimationClockTimer.h"
#include "KVXDateKeyFramesTrack.h"
#include "KVXScheduleDateClock.h"
#include "animation/KVXAnimationDocumentReactor.h"
#include "animation/KVXAnimationNames.h"
#include "animation/KVXAnimatorManager.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbTransaction.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfEdInformation.h"
#include "host/model/PfGsUtility.h"
#include "host/model/PfUiActionManager.h"
#include "host/rx/PfEdCommandStack.h"
#include "host/rx/PfRxDictionary.h"
#include "host/vpe/animation/CClockTimerManager.h"
#include "host/vpe/animation/CTimeSourceManager.h"
#include "host/vpe/animation/CVideoRecorderTimeSource.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CCaption.h"
#include "host/vpe/video/CVideoMakerFFmpegPlugin.h"

#include <QAction>
#include <QIcon>
#include <QPushButton>

#include <algorithm>

KVXIndicatorLink<KVXKeyFrameTimeLine> KVXKeyFrameAnimationManager::s_timeLineWidget;
KVXIndicatorLink<KVXScheduleDateLine> KVXKeyFrameAnimationManager::s_dateLineWidget;
QPointer<QPushButton> KVXKeyFrameAnimationManager::btn_paly_or_pause_;
KVXKeyFrameAnimationManager::VideoOptionsPrompt KVXKeyFrameAnimationManager::s_videoOptionsPrompt = nullptr;
const QString KVXKeyFrameAnimationManager::kPlayPauseActionName = QStringLiteral("KVX_PREVIEW_ANIMATION_PLAY_PAUSE");

namespace {
const QString kNotice = QStringLiteral("提示");
const QString kPlayIcon = QStringLiteral(":/KVX/RoamingVideoPage/Image/RoamingVideoPage/play.png");
const QString kPauseIcon = QStringLiteral(":/KVX/RoamingVideoPage/Image/RoamingVideoPage/pause.png");
// The calendar opens a few days before the schedule, so that its first day
// is not under the margin of the strip.
constexpr int kCalendarLeadDays = 5;

PfDbDocument* currentDocument() { return PfDocManagerPtr()->CurrentDocument(); }

PfDbTransactionManager* transactionsOf(PfDbDocument* document)
{
    return document && document->GetDatabase() ? document->GetDatabase()->TransactionManager() : nullptr;
}
} // namespace

KVXKeyFrameAnimationManager::KVXKeyFrameAnimationManager()
{
    vpe::CVideoMakerFFmpegPlugin::LoadPlugin();
    KVXScheduleDateClock::SetKeyFramePlayback(this);
    m_documentReactor = std::make_unique<KVXAnimationDocumentReactor>(
        [this](PfDbDocument* document) { followDocument(document); });
}

KVXKeyFrameAnimationManager* KVXKeyFrameAnimationManager::GetInstance()
{
    static KVXKeyFrameAnimationManager* instance = new KVXKeyFrameAnimationManager();
    return instance;
}

void KVXKeyFrameAnimationManager::SetTimeLineWidget(KVXKeyFrameTimeLine* timeLine)
{
    s_timeLineWidget = KVXIndicatorLink(timeLine);
}

void KVXKeyFrameAnimationManager::SetDateLineWidget(KVXScheduleDateLine* dateLine)
{
    s_dateLineWidget = KVXIndicatorLink(dateLine);
    KVXScheduleDateClock::SetDateLine(dateLine);
}

void KVXKeyFrameAnimationManager::SetPlayButton(QPushButton* button) { btn_paly_or_pause_ = button; }

void KVXKeyFrameAnimationManager::SetVideoOptionsPrompt(VideoOptionsPrompt prompt) { s_videoOptionsPrompt = prompt; }

// ---- set-up ----------------------------------------------------------------

void KVXKeyFrameAnimationManager::followDocument(PfDbDocument* document)
{
    PfDbDatabase* database = document ? document->GetDatabase() : nullptr;
    if (m_cameraTrack && m_cameraTrack->GetDatabase() == database)
        return;
    if (m_cameraTrack || m_dateTrack)
        UnInitAnimationData();
    if (m_editing && database)
        InitAnimationData();
}

void KVXKeyFrameAnimationManager::InitAnimationData()
{
    PfDbDocument* document = currentDocument();
    if (!document || !document->GetDatabase())
        return;
    m_cameraTrack = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(document->GetDatabase());
    m_dateTrack = KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(document->GetDatabase());
    initKeyFramesButtons();
    initClockTimers();
}

void KVXKeyFrameAnimationManager::UnInitAnimationData()
{
    m_cameraTrack = nullptr;
    m_dateTrack = nullptr;
    if (KVXKeyFrameTimeLine* timeLine = GetTimeLineWidget())
        timeLine->ClearAllKeyFrameButtons();
    uninitClockTimers();
}

void KVXKeyFrameAnimationManager::initKeyFramesButtons()
{
    KVXKeyFrameTimeLine* timeLine = GetTimeLineWidget();
    if (!timeLine)
        return;
    timeLine->ClearAllKeyFrameButtons();
    if (m_cameraTrack)
        for (PfDbObject* object : *m_cameraTrack)
            if (auto* keyFrame = KVXCameraKeyFrame::Cast(object))
                timeLine->CreateCameraKeyFrameButton(keyFrame);
    if (m_dateTrack)
        for (PfDbObject* object : *m_dateTrack)
            if (auto* keyFrame = KVXDateKeyFrame::Cast(object))
                timeLine->CreateDateKeyFrameButton(keyFrame);
}

void KVXKeyFrameAnimationManager::initClockTimers()
{
    uninitClockTimers();
    m_cameraClock = KVXCameraAnimationClockTimer::GetOrCreate(KVXAnimationNames::kCameraAnimationClockTimer);
    if (m_cameraClock) {
        m_cameraClock->SetTimeLineWidget(GetTimeLineWidget());
        m_cameraClock->SetKeyFramePlayback(this);
        m_cameraClock->Pause(true);
    }
    // The schedule plays along with the camera.
    KVXScheduleDateClock::SetSchedulePlayback(KVXAnimatorManager::getInstance());
    m_dateClock = KVXScheduleDateClock::Get();
    if (m_dateClock) {
        m_dateClock->SetDateTimeLineWidget(GetDateLineWidget());
        m_dateClock->Pause(true);
    }
    m_videoClock = KVXVideoRecordClockTimer::GetOrCreateClockTimer(KVXAnimationNames::kVideoRecordClockTimer);
    if (m_videoClock) {
        m_videoClock->SetKeyFramePlayback(this);
        m_videoClock->Pause(true);
    }
    // The viewer's default timer goes on ticking with the viewer's clock.
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    vpe::CClockTimer* defaultTimer =
        vpe::CClockTimerManager::GetInstance()->Find(vpe::CClockTimerManager::kDefaultTimerName);
    if (viewer && defaultTimer)
        viewer->GetClock()->AddObserver(defaultTimer);
}

void KVXKeyFrameAnimationManager::uninitClockTimers()
{
    vpe::CClockTimerManager* registry = vpe::CClockTimerManager::GetInstance();
    registry->Remove(KVXAnimationNames::kCameraAnimationClockTimer);
    registry->Remove(KVXAnimationNames::kDateAnimationClockTimer);
    registry->Remove(KVXAnimationNames::kVideoRecordClockTimer);
    registry->Remove(KVXAnimationNames::kRouteAnimationClockTimer);
    m_cameraClock = nullptr;
    m_dateClock = nullptr;
    m_videoClock = nullptr;
}

// ---- video export ----------------------------------------------------------------

namespace {
const char* const kVideoTimeSourceName = "animation_video_time_source";

void runHostCommand(const wchar_t* name)
{
    if (auto* commands = PfEdCommandStack::Cast(PfRxSysRegistry()->GetAt(kPfRxRegisteredCommandsName)))
        commands->RunCommand(name);
}

vpe::CVideoRecorderTimeSource* videoTimeSource(unsigned int framesPerSecond)
{
    vpe::CTimeSourceManager* sources = vpe::CTimeSourceManager::GetInstance();
    auto* source = dynamic_cast<vpe::CVideoRecorderTimeSource*>(sources->Find(kVideoTimeSourceName));
    if (!source) {
        source = new vpe::CVideoRecorderTimeSource(framesPerSecond);
        sources->Add(kVideoTimeSourceName, source);
    }
    source->Reset();
    source->SetFrameRate(framesPerSecond);
    return source;
}
} // namespace

void KVXKeyFrameAnimationManager::OutputVideo()
{
    if (!PfGsUtility::CurrentViewer())
        return;
    VideoOptions options;
    if (getAnimationVideoLength() <= 0.0) {
        PfEdInformation(QStringLiteral("尚未制作动画"), kNotice);
        return;
    }
    if (!s_videoOptionsPrompt || !s_videoOptionsPrompt(options))
        return;
    QString error;
    if (!ExportVideo(options, &error))
        PfEdInformation(error, kNotice);
}

bool KVXKeyFrameAnimationManager::ExportVideo(const VideoOptions& options, QString* error)
{
    QString reason;
    QString& why = error ? *error : reason;
    if (!PfGsUtility::CurrentViewer() || m_recording) {
        why = QStringLiteral("没有可以导出的视图");
        return false;
    }
    StopAnimation();
    if (!m_videoClock)
        initClockTimers();
    vpe::CAnimator* animator = m_videoClock ? createCameraAnimator(m_videoClock.get()) : nullptr;
    if (!animator) {
        why = QStringLiteral("尚未制作动画");
        return false;
    }
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    m_keptSignsVisible = schedule->getSignsVisible();
    schedule->setSignsVisible(false);
    m_videoClock->BeginRecord(animator->GetAnimation()->GetLength(), options.frameRate);
    if (datesPlayAlong())
        KVXAnimatorManager::getInstance()->play();
    showFilmCaption();
    markSceneDirty();
    if (!BeginRecordVideo(options, &why)) {
        closeRecording(false);
        return false;
    }
    if (!recordFrames(&why)) {
        closeRecording(false);
        return false;
    }
    if (!m_recordError.isEmpty())
        why = m_recordError;
    return m_recordError.isEmpty();
}

void KVXKeyFrameAnimationManager::SetFilmCaption(bool shown, const QString& title)
{
    m_captionShown = shown;
    m_captionTitle = title;
}

void KVXKeyFrameAnimationManager::showFilmCaption()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    const bool dates = datesPlayAlong() && m_dateClock;
    if (!viewer || !m_captionShown || (!dates && m_captionTitle.isEmpty()))
        return;
    vpe::CCaption* caption = viewer->GetCaption();
    caption->SetTitle(m_captionTitle);
    caption->SetText(QString());
    caption->SetProgress(-1.0);
    if (dates) {
        // The dates the camera reaches; without date key frames the schedule
        // stands still and no date is shown.
        m_dateClock->ShowDateOn(caption, m_dateClock->DateForTime(UpdateDateClockTimerByCameraClockTimer(0.0)));
        m_dateClock->SetCaption(caption);
    }
    caption->SetVisible(true);
}

bool KVXKeyFrameAnimationManager::BeginRecordVideo(const VideoOptions& options, QString* error)
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return false;
    runHostCommand(L"KVX.KVX_STOP_AUTO_SAVE");
    m_recording = true;
    m_recordError.clear();
    if (options.offScreen) {
        viewer->GetOffscreenTool()->SetSize(static_cast<int>(options.width), static_cast<int>(options.height));
        viewer->GetOffscreenTool()->Begin();
    }
    vpe::CVideoRecorder* recorder = viewer->GetAnimationManager()->GetOrCreateVideoRecorder();
    recorder->SetResolution(viewer->GetActiveViewportWidth(), viewer->GetActiveViewportHeight());
    recorder->SetFileName(QString::fromStdWString(options.fileName));
    recorder->SetFrameRate(options.frameRate);
    m_keptTimeSource = viewer->GetTimeSource();
    viewer->SetTimeSource(videoTimeSource(options.frameRate));
    return recorder->RecordBegin(0.0, error);
}

bool KVXKeyFrameAnimationManager::recordFrames(QString* error)
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    vpe::CVideoRecorder* recorder = viewer->GetAnimationManager()->GetVideoRecorder();
    QImage frame;
    // The first frame shows the fly-through at its time 0.
    if (!viewer->FrameAtCurrentTime(frame, error))
        return false;
    while (m_recording && recorder->IsRecording())
        if (!viewer->Frame(frame, error))
            return false;
    if (m_recording) {
        // The encoder gave up half-way.
        if (error)
            *error = recorder->LastError();
        return false;
    }
    return true;
}

void KVXKeyFrameAnimationManager::EndRecordVideo()
{
    if (!m_recording)
        return;
    closeRecording(true);
    if (m_recordError.isEmpty())
        PfEdInformation(QStringLiteral("导出视频完成!"), kNotice);
}

void KVXKeyFrameAnimationManager::closeRecording(bool finished)
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (viewer && m_recording) {
        vpe::CVideoRecorder* recorder = viewer->GetAnimationManager()->GetOrCreateVideoRecorder();
        const bool wasRecording = recorder->IsRecording();
        recorder->RecordEnd(m_videoClock ? m_videoClock->GetValue() : 0.0);
        if (finished && wasRecording)
            viewer->GetVideoMaker()->Finish(&m_recordError);
        else
            viewer->GetVideoMaker()->Cancel();
        if (finished && !wasRecording)
            m_recordError = recorder->LastError();
        viewer->GetOffscreenTool()->End();
        viewer->SetTimeSource(m_keptTimeSource.get());
        m_keptTimeSource = nullptr;
        runHostCommand(L"KVX.KVX_START_AUTO_SAVE");
    }
    m_recording = false;
    if (m_videoClock)
        m_videoClock->EndRecord();
    if (m_cameraClock)
        m_cameraClock->Pause(true);
    deleteCameraAnimator();
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    if (datesPlayAlong() && schedule->getPlayState() != 0) {
        schedule->stop();
        schedule->resumeScene();
    }
    schedule->setSignsVisible(m_keptSignsVisible);
    if (m_dateClock)
        m_dateClock->SetCaption(nullptr);
    if (viewer && viewer->HasCaption())
        viewer->GetCaption()->SetVisible(false);
}

// ---- editing -----------------------------------------------------------------

void KVXKeyFrameAnimationManager::BeginEditKeyFrameAnimation()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return;
    m_editing = true;
    if (!m_cameraTrack && !m_dateTrack)
        InitAnimationData();
    m_savedMinimumFrameRate = viewer->GetMinimumFrameRate();
    viewer->SetMinimumFrameRate(0);
    if (PfDbDocument* document = currentDocument()) {
        m_savedAutoSaveMinutes = document->GetAutoSaveMinutes();
        document->SetAutoSaveMinutes(0);
    }
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    schedule->updateAllAnimationsDateRange();
    const QDate start = schedule->getAllAnimationsStartDate();
    if (KVXScheduleDateLine* dateLine = GetDateLineWidget(); dateLine && start.isValid()) {
        dateLine->SetCalendarStartDate(start.addDays(-kCalendarLeadDays));
        dateLine->SetCalendarDateRange(start, schedule->getAllAnimationsEndDate());
        // A date key frame takes the indicator's date: it must show one.
        if (!dateLine->GetIndicator().isValid())
            dateLine->SetIndicator(start);
    }
}

void KVXKeyFrameAnimationManager::EndEditKeyFrameAnimation()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return;
    StopAnimation();
    viewer->SetMinimumFrameRate(m_savedMinimumFrameRate);
    PfDbDocument* document = currentDocument();
    if (m_savedAutoSaveMinutes != 0 && document) {
        document->SetAutoSaveMinutes(m_savedAutoSaveMinutes);
        m_savedAutoSaveMinutes = 0;
    }
    m_editing = false;
}

void KVXKeyFrameAnimationManager::CreateKeyFrame()
{
    if (!currentDocument())
        return;
    if (m_playState == Playing) {
        PfEdInformation(QStringLiteral("动画正在播放状态，请先暂停或停止动画播放"), kNotice);
        return;
    }
    KVXKeyFrameTimeLine* timeLine = GetTimeLineWidget();
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return;
    const int ms = timeLine ? static_cast<int>(timeLine->GetTimeIndicator()) : 0;
    KVXScheduleDateLine* dateLine = GetDateLineWidget();
    const QDate date = m_enableDateAnimation && dateLine ? dateLine->GetIndicator() : QDate();
    const QString refusal = CreateKeyFrameAt(ms, *viewer->GetCamera(), date);
    if (!refusal.isEmpty())
        PfEdInformation(refusal, kNotice);
}

QString KVXKeyFrameAnimationManager::CreateKeyFrameAt(int ms, const vpe::CCamera& camera, const QDate& date)
{
    PfDbDocument* document = currentDocument();
    if (document && !m_cameraTrack)
        InitAnimationData();
    if (!document || !m_cameraTrack)
        return QStringLiteral("没有打开的项目");
    if (ms < 0)
        return QStringLiteral("关键帧的时间不能为负");
    if (m_cameraTrack->HasKeyFrameAtTime(ms))
        return QStringLiteral("当前时间已经存在关键帧！");
    PfDbTransactionManager* transactions = transactionsOf(document);
    transactions->StartTransaction()->SetName(QStringLiteral("添加关键帧"));
    KVXCameraKeyFrame* cameraKeyFrame = m_cameraTrack->CreateCameraKeyFrame(ms);
    if (cameraKeyFrame) {
        vpe::CRefPtr<vpe::CCamera> copy = camera.Clone();
        cameraKeyFrame->SetCamera(copy.get());
    }
    SetCameraAnimationDirty();
    KVXDateKeyFrame* dateKeyFrame = nullptr;
    if (date.isValid() && m_dateTrack) {
        dateKeyFrame = KVXDateKeyFrame::Cast(m_dateTrack->CreateKeyFrame(ms));
        if (dateKeyFrame)
            dateKeyFrame->SetDate(date);
    }
    transactions->EndTransaction();
    markSceneDirty();
    if (KVXKeyFrameTimeLine* timeLine = GetTimeLineWidget())
        timeLine->CreateKeyFrameButton(cameraKeyFrame, dateKeyFrame);
    return QString();
}

void KVXKeyFrameAnimationManager::DeleteKeyFrame()
{
    PfDbDocument* document = currentDocument();
    if (!document)
        return;
    StopAnimation();
    KVXKeyFrameTimeLine* timeLine = GetTimeLineWidget();
    KVXCameraKeyFrame* camera = timeLine ? timeLine->GetPickedCameraKeyFrame() : nullptr;
    KVXDateKeyFrame* date = timeLine ? timeLine->GetPickedDateKeyFrame() : nullptr;
    if (!camera && !date) {
        PfEdInformation(QStringLiteral("请先选中一帧关键帧再删除"), kNotice);
        return;
    }
    PfDbTransactionManager* transactions = transactionsOf(document);
    transactions->StartTransaction()->SetName(QStringLiteral("删除关键帧"));
    if (camera && m_cameraTrack)
        m_cameraTrack->RemoveKeyFrame(static_cast<qint64>(camera->GetHandle()));
    if (date && m_dateTrack)
        m_dateTrack->RemoveKeyFrame(static_cast<qint64>(date->GetHandle()));
    transactions->EndTransaction();
    timeLine->DeleteKeyFrameButton();
}

bool KVXKeyFrameAnimationManager::DeleteKeyFramesAt(int ms)
{
    PfDbDocument* document = currentDocument();
    if (document && !m_cameraTrack)
        InitAnimationData();
    if (!document || !m_cameraTrack || !m_dateTrack)
        return false;
    // Each key frame at that moment, with the track that holds it.
    std::vector<std::pair<KVXKeyFramesTrack*, PfDbHandle>> doomed;
    for (KVXKeyFramesTrack* track : {static_cast<KVXKeyFramesTrack*>(m_cameraTrack),
                                     static_cast<KVXKeyFramesTrack*>(m_dateTrack)})
        for (PfDbObject* object : *track)
            if (auto* keyFrame = KVXKeyFrame::Cast(object); keyFrame && keyFrame->GetTime() == ms)
                doomed.emplace_back(track, keyFrame->GetHandle());
    if (doomed.empty())
        return false;
    StopAnimation();
    PfDbTransactionManager* transactions = transactionsOf(document);
    transactions->StartTransaction()->SetName(QStringLiteral("删除关键帧"));
    for (const auto& [track, handle] : doomed)
        track->RemoveKeyFrame(static_cast<qint64>(handle));
    transactions->EndTransaction();
    UpdateTimeLineWidget();
    return true;
}

// ---- the camera animation -------------------------------------------------

vpe::CAnimator* KVXKeyFrameAnimationManager::getCameraAnimator() const
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return nullptr;
    vpe::CAnimator* animator = viewer->GetAnimationManager()->FindAnimator(KVXAnimationNames::kCameraAnimationName);
    if (animator)
        animator->Enable();
    return animator;
}

vpe::CAnimator* KVXKeyFrameAnimationManager::createCameraAnimator(vpe::CClockTimer* clock)
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer || !m_cameraTrack || !clock)
        return nullptr;
    std::vector<KVXKeyFrame*> sorted;
    m_cameraTrack->GetSortedKeyFramesByTime(sorted);
    std::vector<KVXCameraKeyFrame*> keyFrames;
    for (KVXKeyFrame* keyFrame : sorted)
        if (auto* camera = KVXCameraKeyFrame::Cast(keyFrame); camera && camera->GetCamera())
            keyFrames.push_back(camera);
    if (keyFrames.size() < 2)
        return nullptr;
    // A stale animation of that name (left by a document that went) is
    // replaced, not reused.
    deleteCameraAnimator();
    vpe::CAnimationManager* animations = viewer->GetAnimationManager();
    animations->DestroyAnimation(KVXAnimationNames::kCameraAnimationName);
    const float length = keyFrames.back()->GetTimeS();
    vpe::CAnimation* animation = animations->CreateAnimation(KVXAnimationNames::kCameraAnimationName, length);
    vpe::CCameraTrack* track = animation->CreateCameraTrack();
    track->SetAnimable(new KVXCameraPlayAnimable(viewer->GetCamera()));
    for (KVXCameraKeyFrame* keyFrame : keyFrames) {
        vpe::CNodeKeyFrame key;
        key.time = keyFrame->GetTime() / 1000.0;
        const vpe::CVec3<float>& eye = keyFrame->GetCamera()->GetPosition();
        key.position.set(eye.x(), eye.y(), eye.z());
        key.rotation = keyFrame->GetCameraRotation();
        track->AddKeyFrame(key);
    }
    vpe::CAnimator* animator = animations->CreateAnimator(KVXAnimationNames::kCameraAnimationName, animation, clock);
    if (!animator)
        return nullptr;
    animator->SetLoop(false);
    animator->Enable();
    return animator;
}

void KVXKeyFrameAnimationManager::deleteCameraAnimator()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return;
    vpe::CAnimationManager* animations = viewer->GetAnimationManager();
    vpe::CAnimator* animator = animations->FindAnimator(KVXAnimationNames::kCameraAnimationName);
    if (!animator)
        return;
    animator->Disable();
    animations->DestroyAnimator(KVXAnimationNames::kCameraAnimationName);
    animations->DestroyAnimation(KVXAnimationNames::kCameraAnimationName);
}

void KVXKeyFrameAnimationManager::SetCameraAnimationDirty()
{
    if (m_cameraClock)
        m_cameraClock->Pause(true);
    deleteCameraAnimator();
}

double KVXKeyFrameAnimationManager::getAnimationVideoLength() const
{
    if (!m_cameraTrack)
        return 0.0;
    std::vector<KVXKeyFrame*> sorted;
    m_cameraTrack->GetSortedKeyFramesByTime(sorted);
    return sorted.size() < 2 ? 0.0 : sorted.back()->GetTime() / 1000.0;
}

void KVXKeyFrameAnimationManager::UpdateTimeLineWidget()
{
    KVXKeyFrameTimeLine* timeLine = GetTimeLineWidget();
    if (!timeLine)
        return;
    initKeyFramesButtons();
}

// ---- playback ----------------------------------------------------------------

bool KVXKeyFrameAnimationManager::datesPlayAlong()
{
    return m_enableDateAnimation && dateStops().size() > 1;
}

void KVXKeyFrameAnimationManager::PlayAnimation()
{
    if (!PfGsUtility::CurrentViewer())
        return;
    vpe::CAnimator* animator = getCameraAnimator();
    if (!animator && m_cameraClock) {
        animator = createCameraAnimator(m_cameraClock.get());
        // A new animation starts from its beginning.
        if (animator)
            m_cameraClock->Rewind();
    }
    if (!animator) {
        refreshActions();
        return;
    }
    m_cameraClock->Pause(false);
    m_cameraClock->SetFrozen(false);
    m_cameraClock->SetEndTime(animator->GetAnimation()->GetLength());
    if (datesPlayAlong())
        KVXAnimatorManager::getInstance()->play();
    m_playState = Playing;
    refreshActions();
    markSceneDirty();
}

void KVXKeyFrameAnimationManager::PauseAnimation()
{
    if (!PfGsUtility::CurrentViewer())
        return;
    if (m_cameraClock)
        m_cameraClock->Pause(true);
    // The schedule's pause plays on when it is paused already.
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    if (m_enableDateAnimation && schedule->getPlayState() == 1)
        schedule->pause();
    m_playState = Paused;
    refreshActions();
}

void KVXKeyFrameAnimationManager::PlayOrPauseAnimation()
{
    if (m_playState != Playing)
        PlayAnimation();
    else
        PauseAnimation();
}

void KVXKeyFrameAnimationManager::PlayAnimationAtTime(unsigned int ms)
{
    if (!PfGsUtility::CurrentViewer() || !m_cameraClock)
        return;
    m_cameraClock->FreezeAtTime(ms * 0.001);
    if (!getCameraAnimator())
        createCameraAnimator(m_cameraClock.get());
    if (datesPlayAlong())
        KVXAnimatorManager::getInstance()->play();
    markSceneDirty();
    m_playState = Paused;
    refreshActions();
}

void KVXKeyFrameAnimationManager::StopAnimation()
{
    if (!PfGsUtility::CurrentViewer())
        return;
    if (m_cameraClock)
        m_cameraClock->Rewind();
    if (KVXKeyFrameTimeLine* timeLine = GetTimeLineWidget())
        timeLine->SetTimeIndicator(0);
    if (m_cameraClock)
        m_cameraClock->Pause(true);
    deleteCameraAnimator();
    if (m_dateClock)
        m_dateClock->Rewind();
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    if (m_enableDateAnimation && schedule->getPlayState() != 0) {
        schedule->stop();
        schedule->resumeScene();
        if (KVXScheduleDateLine* dateLine = GetDateLineWidget())
            dateLine->SetIndicator(dateLine->GetCalendarStartDate());
    }
    m_playState = Stopped;
    refreshActions();
}

void KVXKeyFrameAnimationManager::refreshActions()
{
    const bool playing = m_playState == Playing;
    QAction* action = PfUiActionManager::GetInstance()->FindAction(kPlayPauseActionName);
    if (!action && !btn_paly_or_pause_)
        return;
    // Made only for a shown action or button: a command line has no pictures.
    const QIcon icon(playing ? kPauseIcon : kPlayIcon);
    if (action) {
        action->setChecked(playing);
        action->setText(playing ? QStringLiteral("暂停") : QStringLiteral("预览"));
        action->setIcon(icon);
    }
    if (btn_paly_or_pause_) {
        btn_paly_or_pause_->setIcon(icon);
        btn_paly_or_pause_->setChecked(playing);
    }
}

void KVXKeyFrameAnimationManager::markSceneDirty() const
{
    if (vpe::CViewer* viewer = PfGsUtility::CurrentViewer())
        viewer->SetDirty();
}

// ---- the dates that follow the camera ------------------------------------------

vpe::CClockTimer* KVXKeyFrameAnimationManager::dateSourceClock() const
{
    if (m_videoClock && !m_videoClock->IsPaused())
        return m_videoClock.get();
    if (m_cameraClock && !m_cameraClock->IsPaused()) {
        if (m_dateClock)
            m_dateClock->SetFrozen(m_cameraClock->IsFrozen());
        return m_cameraClock.get();
    }
    return nullptr;
}

const std::vector<KVXKeyFrameAnimationManager::DateStop>& KVXKeyFrameAnimationManager::dateStops()
{
    PfDbDatabase* database = m_dateTrack ? m_dateTrack->GetDatabase() : nullptr;
    const unsigned long long change = database ? database->TransactionManager()->GetChangeCount() : 0;
    if (m_dateStopsTrack == m_dateTrack && m_dateStopsChange == change)
        return m_dateStops;
    m_dateStops.clear();
    m_dateStopsTrack = m_dateTrack;
    m_dateStopsChange = change;
    if (!m_dateTrack)
        return m_dateStops;
    std::vector<KVXKeyFrame*> sorted;
    m_dateTrack->GetSortedKeyFramesByTime(sorted);
    for (KVXKeyFrame* keyFrame : sorted)
        if (auto* date = KVXDateKeyFrame::Cast(keyFrame))
            m_dateStops.push_back({date->GetTime(), date->GetDate()});
    return m_dateStops;
}

double KVXKeyFrameAnimationManager::UpdateDateClockTimerByCameraClockTimer(double t)
{
    if (!m_dateClock)
        return t;
    const std::vector<DateStop>& stops = dateStops();
    if (stops.size() < 2)
        return t;
    vpe::CClockTimer* source = dateSourceClock();
    if (!source)
        return t;
    m_dateClock->Pause(false);
    const double cameraTime = source->GetValue();
    const qint64 ms = static_cast<unsigned int>(cameraTime * 1000.0);
    // The first stop at or after the moment: the one at it, or the one after.
    auto at = std::lower_bound(stops.begin(), stops.end(), ms,
                               [](const DateStop& stop, qint64 moment) { return stop.ms < moment; });
    if (at != stops.end() && at->ms == ms)
        return m_dateClock->TimeForDate(at->date);
    const DateStop* before = at != stops.begin() ? &*(at - 1) : nullptr;
    const DateStop* after = at != stops.end() ? &*at : nullptr;
    if (before && after) {
        const double t0 = m_dateClock->TimeForDate(before->date);
        const double t1 = m_dateClock->TimeForDate(after->date);
        // Key-frame moments in seconds, in single precision as the tracks
        // give them.
        const float s0 = static_cast<float>(before->ms) / 1000.0f;
        const float s1 = static_cast<float>(after->ms) / 1000.0f;
        if (s1 == s0)
            return t0;
        return (cameraTime - s0) * (t1 - t0) / (s1 - s0) + t0;
    }
    if (before)
        return m_dateClock->TimeForDate(before->date);
    if (after)
        return m_dateClock->TimeForDate(after->date);
    return t;
}
