#pragma once

class PfDbDocument;

// Hears documents come, become current and go.
class PfDocManagerReactor {
public:
    virtual ~PfDocManagerReactor() = default;
    // A document was read from a file (before it becomes current).
    virtual void documentOpened(PfDbDocument* document) {}
    // The current document changed; null when none is current any more.
    virtual void documentActivated(PfDbDocument* document) {}
    virtual void documentToBeDestroyed(PfDbDocument* document) {}
};
