#include "PfApGrxEventFilter.h"

#include "host/app/PfQtView.h"

#include <QEvent>

bool PfApGrxEventFilter::eventFilter(QObject* watched, QEvent* event)
{
    const int type = event->type();
    if (type >= kFirstGraphicsEvent && type <= kLastGraphicsEvent)
        return true;
    if (type == QEvent::Paint && qobject_cast<PfQtView*>(watched))
        return true;
    return QObject::eventFilter(watched, event);
}
