#pragma once

#include "host/db/PfDbHandle.h"

class PfGsView;

namespace vpe {
class CViewer;
}

// The graphics of the current document, as the module reaches them.
class PfGsUtility {
public:
    // Null without a current document or without a view of it.
    static PfGsView* ActiveView();
    static vpe::CViewer* CurrentViewer();
    // Asks the current view for a new frame.
    static void Refresh();
    // Makes a hidden element visible again and draws it.
    static void ShowObject(PfDbHandle id);
};
