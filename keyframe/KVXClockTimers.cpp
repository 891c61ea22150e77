#include "KVXClockTimers.h"

#include "host/model/PfGsUtility.h"
#include "host/vpe/render/CViewer.h"

vpe::CClock* KVXClockTimers::CurrentViewerClock()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    return viewer ? viewer->GetClock() : nullptr;
}
