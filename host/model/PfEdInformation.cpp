#include "PfEdInformation.h"

#include <QTextStream>

namespace {

class StandardErrorSink : public PfEdInformationSink {
public:
    void Show(const QString& title, const QString& text) override
    {
        QTextStream err(stderr);
        err.setCodec("UTF-8");
        err << title << ": " << text << '\n';
    }
};

StandardErrorSink standardError;
PfEdInformationSink* current = &standardError;

} // namespace

PfEdInformationSink* PfEdInformationSink::Install(PfEdInformationSink* sink)
{
    PfEdInformationSink* previous = current;
    current = sink ? sink : &standardError;
    return previous;
}

PfEdInformationSink* PfEdInformationSink::Current() { return current; }

void PfEdInformation(const QString& text, const QString& title) { current->Show(title, text); }
