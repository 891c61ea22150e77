#pragma once

#include <QDate>
#include <QString>

#include <vector>

class KVXAnimation;
namespace osg {
class Vec3d;
}

// What a planner does from the menus with the elements selected in the
// drawing: give each of them a schedule record of one kind (as one step of
// the undo, starting on the date the timeline shows), and stop whatever
// plays.
class KVXRecordCommands {
public:
    enum Kind { BuildBottomUp, BuildTopDown, BuildAcross, BuildInLayers, Demolish, Move, Rotate, Emphasise, Crane };
    struct KindCommand {
        Kind kind;
        // The command's name for the menus and the action manager.
        QString name;
        QString text;
    };
    static const std::vector<KindCommand>& Kinds();

    // One record of the kind per selected element (a crane record only for
    // cranes), shown in the sequence form, the first opened in the property
    // form. A move follows the polyline (world points, at least two). None,
    // with a notice that says why, when nothing fits.
    static std::vector<KVXAnimation*> AddToSelection(Kind kind, const std::vector<osg::Vec3d>& path = {});
    // The day new records start: the date timeline's, or the day after the
    // schedule ends, or today.
    static QDate FirstDayOfNewRecords();

    // Stops the fly-through, the schedule and the live cranes; false when
    // nothing was playing.
    static bool StopAll();
};
