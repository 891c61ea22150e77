#pragma once

#include <QString>

// Where the host's information boxes go: a modal message box in the
// application, standard error in the command line (the default), a recorder
// in tests. The installed sink is not owned.
class PfEdInformationSink {
public:
    virtual ~PfEdInformationSink() = default;
    virtual void Show(const QString& title, const QString& text) = 0;

    // Null puts the standard-error default back; answers the previous sink.
    static PfEdInformationSink* Install(PfEdInformationSink* sink);
    static PfEdInformationSink* Current();
};

// Tells the user something, and waits for it to be read where that applies.
void PfEdInformation(const QString& text, const QString& title);
