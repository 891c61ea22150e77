#pragma once

#include "host/rx/PfadError.h"

#include <QString>
#include <QStringList>

// Plays the current document's schedule off-screen, from the view's camera,
// into an MP4 video (H.264, 24 frames a second), with a poster picture of
// the site under way. The schedule is stopped and the model put back
// afterwards; progress goes to the host's progress meter.
class KVXScheduleVideo {
public:
    static constexpr unsigned int kFramesPerSecond = 24;
    // The command's name in the module's command group.
    static const wchar_t* const kCommandName;
    // The command that stands the schedule still on a date, for a picture.
    static const wchar_t* const kShowDateCommandName;

    struct Options {
        QString file;
        int width = 1280;
        int height = 720;
        double secondsPerDay = 1.0;
        // Empty: no poster.
        QString poster;
        // The date (and the title, when there is one) over the picture.
        bool caption = true;
        QString title;
    };

    // The words of the command: "out=FILE.mp4", "size=WxH",
    // "seconds-per-day=S", "poster=FILE.png", "title=TEXT", "caption=off";
    // false with the reason for a
    // word it does not understand or a value out of range.
    static bool ParseArguments(const QStringList& arguments, Options& options, QString* error);
    // The command: parse, then export.
    static Pfad::Error RunCommand(const QStringList& arguments, QString* message);
    // Shows the current document's site as it stands on a date, with the
    // caption: "date=yyyy-MM-dd", "title=TEXT", "caption=off".
    static Pfad::Error RunShowDateCommand(const QStringList& arguments, QString* message);

    // False with the reason when there is no view, no schedule to play, or
    // the video cannot be written (a partial file is not left behind).
    static bool Export(const Options& options, QString* error);
    // How many frames a schedule of that length gives: every frame of it, the
    // last day included, and a second more on the finished site.
    static int FrameCount(double scheduleSeconds);
};
