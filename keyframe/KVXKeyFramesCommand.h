#pragma once

#include "host/rx/PfadError.h"

#include <QString>
#include <QStringList>

// The module's key-frame command, for the command line: lists the current
// document's camera and date key frames, or adds or deletes them through the
// key-frame manager (one undoable transaction each). Its words:
//   (none)                       list, one line per moment
//   add=MS camera=ex,ey,ez,tx,ty,tz [date=yyyy-MM-dd]
//   delete=MS
// On success the message holds what to print; on failure, the reason.
class KVXKeyFramesCommand {
public:
    static const wchar_t* const kCommandName;
    static const wchar_t* const kExportCommandName;

    static Pfad::Error RunCommand(const QStringList& arguments, QString* message);
    // Exports the current document's fly-through: "out=FILE.mp4" (made
    // absolute), "size=WxH" (1280x720 unless given), "title=TEXT",
    // "caption=off", "force" (a fly-through over an hour is refused without
    // it).
    static Pfad::Error RunExportCommand(const QStringList& arguments, QString* message);
    // One line per moment: its time, the camera's eye and a target one metre
    // ahead on its line of sight, and the date; "-" for what it lacks.
    static QString Listing();
};
