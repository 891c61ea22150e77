#pragma once

#include "host/rx/PfadError.h"

#include <QStringList>

class PfDbDocument;

// The demo site's construction schedule, for the current document after the
// demo site was built into it and a view attached (records take their
// elements' elevations from the view): the old 3号楼 demolished storey by
// storey from the top, 1号楼 and 2号楼 built floor by floor, the basement slab
// laid in layers, the truck driving the site road, the gate's leaf pivoting
// open and shut, the hazard zone flashing while the demolition runs, and the tower
// crane erected, climbing 6 m at a time, slewing and dismantled at the end.
// It starts on 3 March 2025 and runs 58 days.
class KVXDemoSchedule {
public:
    static const wchar_t* const kCommandName;
    // The command: adds the schedule to the current document (no words).
    static Pfad::Error RunCommand(const QStringList& arguments, QString* message);
    // False when the document lacks an element the schedule needs.
    static bool Add(PfDbDocument* document);
};
