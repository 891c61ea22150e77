#pragma once

#include "KVXCameraAnimationClockTimer.h"
#include "KVXDateAnimationClockTimer.h"
#include "KVXIndicatorLink.h"
#include "KVXKeyFramePlayback.h"
#include "KVXKeyFrameTimeLine.h"
#include "KVXScheduleDateLine.h"
#include "KVXVideoRecordClockTimer.h"

#include "host/vpe/animation/CClockTimer.h"
#include "host/vpe/animation/CTimeSource.h"

#include <QPointer>
#include <QString>

#include <memory>
#include <string>
#include <vector>

class KVXAnimationDocumentReactor;
class KVXCameraKeyFramesTrack;
class KVXDateKeyFramesTrack;
class PfDbDocument;
class QPushButton;

namespace vpe {
class CAnimator;
class CCamera;
}

// The process's controller of roaming-video editing: the project's two
// key-frame tracks, the clocks that play them, key frames made and deleted
// at the timeline's indicator inside undoable transactions, the camera
// animation built from the camera key frames, and play, pause, stop and jump.
// While the camera plays, the schedule plays along, its date following the
// camera through the date key frames.
class KVXKeyFrameAnimationManager : public KVXKeyFramePlayback {
public:
    enum PlayState { Stopped = 0, Playing = 1, Paused = 2 };

    // How a fly-through is exported: always at 24 frames a second, always
    // drawn off screen at the video's size.
    struct VideoOptions {
        unsigned int width = 1280;
        unsigned int height = 720;
        unsigned int frameRate = 24;
        std::wstring fileName;
        bool offScreen = true;
    };
    // Asks the user how to export; false when cancelled. The output settings
    // dialog, above this level, gives itself.
    using VideoOptionsPrompt = bool (*)(VideoOptions& options);
    static void SetVideoOptionsPrompt(VideoOptionsPrompt prompt);

    static KVXKeyFrameAnimationManager* GetInstance();

    // The current document's tracks (made when missing), the timeline's
    // buttons for their key frames, and the clocks on the current viewer.
    void InitAnimationData();
    void UnInitAnimationData();

    // Editing a fly-through: the viewer draws every frame in full and the
    // document is not saved automatically meanwhile; the date timeline
    // shows the schedule's dates.
    void BeginEditKeyFrameAnimation();
    void EndEditKeyFrameAnimation();
    bool IsEditing() const { return m_editing; }

    // A camera key frame from the view's camera at the timeline's indicator
    // (with a date key frame at the date timeline's date while the schedule
    // plays along); refused, with a notice, while playing or where a camera
    // key frame is already.
    void CreateKeyFrame();
    // The picked button's key frames; a notice when none is picked.
    void DeleteKeyFrame();
    // The same without the timelines, for scripts and the command line: a
    // camera key frame at ms from the camera, and a date key frame when the
    // date is valid, in one transaction of the current document. Answers
    // the reason of a refusal, empty when made.
    QString CreateKeyFrameAt(int ms, const vpe::CCamera& camera, const QDate& date);
    // Removes the camera and date key frames at ms in one transaction;
    // false when there are none.
    bool DeleteKeyFramesAt(int ms);

    void PlayAnimation();
    void PauseAnimation();
    void PlayOrPauseAnimation();
    // Shows the frame at that time, paused there.
    void PlayAnimationAtTime(unsigned int ms);
    // Back to the start: the camera clock rewound and paused, the camera
    // animation dropped, the date clock rewound and a playing schedule
    // stopped and its scene put back.
    void StopAnimation() override;

    PlayState GetPlayState() const { return m_playState; }
    void SetPlayState(PlayState state) { m_playState = state; }
    bool GetEnableDateAnimation() const { return m_enableDateAnimation; }
    void SetEnableDateAnimation(bool enable) { m_enableDateAnimation = enable; }

    // The key frames changed: the camera animation is built again on the
    // next play.
    void SetCameraAnimationDirty();
    // The timeline's buttons built again from the tracks.
    void UpdateTimeLineWidget();
    // Seconds from the first to the last camera key frame's moment counted
    // from 0; 0 with fewer than two.
    double getAnimationVideoLength() const;

    // Asks for the options, then exports the fly-through; the user is told
    // when there is nothing to export or the video cannot be written.
    void OutputVideo();
    // Exports the fly-through frame by frame with those options, the schedule
    // playing along; false with the reason when there is no fly-through (two
    // camera key frames at least) or the video cannot be written, and then
    // an earlier file of that name stays as it was.
    bool ExportVideo(const VideoOptions& options, QString* error = nullptr);
    // The recording's set-up: auto-save stopped, drawing off screen at the
    // video's size, the recorder opened and the video time source in place.
    bool BeginRecordVideo(const VideoOptions& options, QString* error = nullptr);
    // The video clock reached the end: the file finished and everything set
    // back as it was before the export.
    void EndRecordVideo() override;
    bool IsRecordingVideo() const { return m_recording; }
    // Whether exported films carry the caption (the schedule's date while it
    // follows the camera, under the title when there is one); on by default.
    void SetFilmCaption(bool shown, const QString& title = QString());

    // The date clock's time at the moment the camera (or the video) clock
    // has reached, from the date key frames around it; t unchanged when no
    // camera animation with at least two date key frames drives the dates.
    double UpdateDateClockTimerByCameraClockTimer(double t) override;

    KVXCameraKeyFramesTrack* GetCameraKeyFramesTrack() const { return m_cameraTrack; }
    KVXDateKeyFramesTrack* GetDateKeyFramesTrack() const { return m_dateTrack; }
    KVXCameraAnimationClockTimer* GetCameraAnimationClockTimer() const { return m_cameraClock.get(); }
    KVXDateAnimationClockTimer* GetDateAnimationClockTimer() const { return m_dateClock.get(); }
    KVXVideoRecordClockTimer* GetVideoRecordClockTimer() const { return m_videoClock.get(); }

    // The key-frame timeline, the date timeline and the play button, set by
    // whoever shows them (the application, a test); clocks set up from then
    // on move the timelines. Null once the widget is gone.
    static void SetTimeLineWidget(KVXKeyFrameTimeLine* timeLine);
    static KVXKeyFrameTimeLine* GetTimeLineWidget() { return s_timeLineWidget.get(); }
    static void SetDateLineWidget(KVXScheduleDateLine* dateLine);
    static KVXScheduleDateLine* GetDateLineWidget() { return s_dateLineWidget.get(); }
    static void SetPlayButton(QPushButton* button);

    // The name of the user-interface action that plays and pauses.
    static const QString kPlayPauseActionName;

private:
    KVXKeyFrameAnimationManager();

    void followDocument(PfDbDocument* document);
    void initKeyFramesButtons();
    void initClockTimers();
    void uninitClockTimers();
    vpe::CAnimator* getCameraAnimator() const;
    vpe::CAnimator* createCameraAnimator(vpe::CClockTimer* clock);
    void deleteCameraAnimator();
    // Draws and records frames until the video clock ends the recording;
    // false with the reason when a frame cannot be drawn or encoded.
    bool recordFrames(QString* error);
    // Sets back what BeginRecordVideo changed; finished, the video takes its
    // place, otherwise it is dropped.
    void closeRecording(bool finished);
    // Puts the film's caption up (or not) as the export begins.
    void showFilmCaption();
    // The schedule plays along only with two date key frames to follow.
    bool datesPlayAlong();
    void refreshActions();
    void markSceneDirty() const;
    // The clock that drives the dates now, or null; copies the camera
    // clock's frozen state to the date clock when it is the camera's.
    vpe::CClockTimer* dateSourceClock() const;

    // A date key frame as the dates follow it: its moment and its date.
    struct DateStop {
        int ms;
        QDate date;
    };
    // The date key frames in time order, looked up on every tick while the
    // dates follow the camera; sorted again only when the document changed.
    const std::vector<DateStop>& dateStops();

    KVXCameraKeyFramesTrack* m_cameraTrack = nullptr;
    KVXDateKeyFramesTrack* m_dateTrack = nullptr;
    bool m_enableDateAnimation = true;
    bool m_editing = false;
    // Held: a timer the registry lets go (its viewer went) must not leave
    // these dangling.
    vpe::CRefPtr<KVXCameraAnimationClockTimer> m_cameraClock;
    vpe::CRefPtr<KVXDateAnimationClockTimer> m_dateClock;
    vpe::CRefPtr<KVXVideoRecordClockTimer> m_videoClock;
    PlayState m_playState = Stopped;
    int m_savedAutoSaveMinutes = 0;
    // The export under way: the viewer's time source before it, and how the
    // video was finished.
    bool m_recording = false;
    // A film shows the site, not the editor's labels: hidden while it is made.
    bool m_keptSignsVisible = true;
    bool m_captionShown = true;
    QString m_captionTitle;
    vpe::CRefPtr<vpe::CTimeSource> m_keptTimeSource;
    QString m_recordError;
    unsigned int m_savedMinimumFrameRate = 0;
    std::vector<DateStop> m_dateStops;
    const KVXDateKeyFramesTrack* m_dateStopsTrack = nullptr;
    unsigned long long m_dateStopsChange = 0;
    // The tracks belong to the current document: let go when it goes.
    std::unique_ptr<KVXAnimationDocumentReactor> m_documentReactor;

    static KVXIndicatorLink<KVXKeyFrameTimeLine> s_timeLineWidget;
    static KVXIndicatorLink<KVXScheduleDateLine> s_dateLineWidget;
    static QPointer<QPushButton> btn_paly_or_pause_;
    static VideoOptionsPrompt s_videoOptionsPrompt;
};
