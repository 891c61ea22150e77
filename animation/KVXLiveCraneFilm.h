#pragma once

#include "host/rx/PfadError.h"

#include <QString>
#include <QStringList>

// Films the current document's tower cranes following live readings of the
// site monitoring platform: the platform animation manager plays, a reading
// is asked for at the start and every five seconds of film (the film waits
// up to five seconds of real time for each), and each frame's caption names
// the last reading: its device, angle, height and when it came. Readings
// that fail are told once and the last good one stays.
class KVXLiveCraneFilm {
public:
    static const wchar_t* const kCommandName;
    static constexpr unsigned int kFramesPerSecond = 24;

    struct Options {
        QString endpoint;
        // "Header: value", or empty.
        QString header;
        QString file;
        int width = 1280;
        int height = 720;
        double seconds = 30.0;
        bool caption = true;
        QString title;
    };

    // "endpoint=URL", "header=TEXT", "out=FILE.mp4", "size=WxH",
    // "seconds=S", "title=TEXT", "caption=off"; eInvalidInput for a word it
    // does not understand, eNotApplicable when the film cannot be made.
    static Pfad::Error RunCommand(const QStringList& arguments, QString* message);
    static bool Film(const Options& options, QString* error);
    // The caption's line for a reading ("TC-SIM-1 · 回转 45° · 高度 36 m · 08:03:26").
    static QString ReadingText(const QString& device, double rotation, double heightMillimetres,
                               const QString& receivedAt);
};
