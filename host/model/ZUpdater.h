#pragma once

#include "host/db/PfDbHandle.h"

#include <cstdint>
#include <string>
#include <vector>

class PfDbDocument;

// A message to the observers of the application's state.
struct ZUpdateMessage {
    std::uint32_t kind = 0;
    PfDbDocument* document = nullptr;
    // For a selection change: the selected object ids.
    std::vector<PfDbHandle> ids;
};

// An observer of the application's state. Observers register themselves by
// appending to updaters_; every message goes to all of them in that order.
// An observer leaves the list when it is destroyed.
class ZUpdater {
public:
    enum MessageKind : std::uint32_t { kSelectionChanged = 1 };

    static std::vector<ZUpdater*> updaters_;

    virtual ~ZUpdater();
    virtual void Update(const ZUpdateMessage& message) = 0;
    virtual std::wstring GetName() const { return std::wstring(); }
    virtual std::wstring GetGroupName() const { return std::wstring(); }
    // A disabled observer is skipped.
    virtual bool IsEnabled() const { return true; }

    static void Broadcast(const ZUpdateMessage& message);
    // Tells every observer that the document's selection changed.
    static void SelectionChanged(PfDbDocument* document);
};
