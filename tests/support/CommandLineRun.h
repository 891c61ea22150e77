#pragma once

#include "host/app/KvxHostCommandLine.h"

#include <QString>
#include <QStringList>
#include <QTextStream>

// What a kvxhost command answered: its exit code and what it printed.
struct Outcome {
    int code;
    QString out;
    QString err;
};

// Runs a kvxhost command in the test's process (arguments without the
// program name).
inline Outcome runCommandLine(const QStringList& arguments)
{
    QString out, err;
    QTextStream outStream(&out), errStream(&err);
    const int code = KvxHostCommandLine(outStream, errStream).Run(arguments);
    outStream.flush();
    errStream.flush();
    return {code, out, err};
}
