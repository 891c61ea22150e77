#include "PfEdPrompt.h"

#include <QTextStream>

namespace {
void toStandardError(const QString& line)
{
    QTextStream err(stderr);
    err.setCodec("UTF-8");
    err << line << '\n';
}

PfEdPrompt::Display display = &toStandardError;
QString last;
} // namespace

void PfEdPrompt::SetDisplay(Display next) { display = next ? next : &toStandardError; }

void PfEdPrompt::Show(const QString& line)
{
    last = line;
    display(line);
}

QString PfEdPrompt::Last() { return last; }
