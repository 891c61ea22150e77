#include "ZUpdater.h"

#include "host/db/PfDbDocument.h"

#include <algorithm>

std::vector<ZUpdater*> ZUpdater::updaters_;

ZUpdater::~ZUpdater() { updaters_.erase(std::remove(updaters_.begin(), updaters_.end(), this), updaters_.end()); }

void ZUpdater::Broadcast(const ZUpdateMessage& message)
{
    // A copy: an observer may register or leave while it is told.
    const std::vector<ZUpdater*> observers = updaters_;
    for (ZUpdater* observer : observers) {
        if (std::find(updaters_.begin(), updaters_.end(), observer) != updaters_.end() && observer->IsEnabled())
            observer->Update(message);
    }
}

void ZUpdater::SelectionChanged(PfDbDocument* document)
{
    ZUpdateMessage message;
    message.kind = kSelectionChanged;
    message.document = document;
    if (document)
        message.ids = document->GetSelectionSet().Ids();
    Broadcast(message);
}
