#include "PfApGrxEventFilter.h"

#include "host/model/PfGraphicsEvents.h"

bool PfApGrxEventFilter::eventFilter(QObject* watched, QEvent* event)
{
    if (PfGraphicsEvents::IsGraphicsEvent(event->type()))
        return true;
    if (event->type() == QEvent::Paint && watched && watched->inherits(PfGraphicsEvents::kViewClassName))
        return true;
    return QObject::eventFilter(watched, event);
}
