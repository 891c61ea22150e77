#pragma once

#include "host/rx/PfadError.h"

#include <QStringList>

class PfDbDocument;
struct KvxCommandLineOptions;
class QString;
class QTextStream;

// The kvxhost command line: demo-site, render, play, export, keyframes, check
// and list (kvxhost --help tells what each does and takes). Every output is
// checked before any work (its format, its folder, and never the input
// document) and written whole or not at all. Exit codes: 0 done, 1 failed
// while running, 2 bad usage; a fault is one line on the error stream.
class KvxHostCommandLine {
public:
    KvxHostCommandLine(QTextStream& out, QTextStream& err);

    // The arguments without the program name; answers the exit code.
    int Run(const QStringList& arguments);

private:
    using Options = KvxCommandLineOptions;

    // The exit code of a refusal, or 0.
    int checkOutputs(const Options& options);
    int checkSize(const Options& options);
    int help(const QString& command);
    int demoSite(const Options& options);
    int render(const Options& options);
    int play(const Options& options);
    int keyFrames(const Options& options);
    int exportFlyThrough(const Options& options);
    int check(const Options& options);
    int list(const Options& options);
    int live(const Options& options);
    int importModel(const Options& options);
    int readModel(const Options& options);
    // Serves crane readings until the program is stopped.
    int craneSimulator(const Options& options);
    // Opens the document, shows it at the size and puts the camera where the
    // options say (or on the overview of the whole model).
    PfDbDocument* openAndShow(const Options& options, QString& error);
    // Runs one of the animation module's commands; its answer in message.
    Pfad::Error runModuleCommand(const wchar_t* name, const QStringList& words, QString& message);
    // The schedule check's lines: the summary on the output, each finding on
    // the error stream; the exit code when the check stands in the way.
    int printCheck(const Options& options, bool force);
    int fail(const QString& message, int code = 1);
    // The exit code of a module command's result: bad words are bad usage.
    static int exitCodeOf(Pfad::Error result);

    QTextStream& m_out;
    QTextStream& m_err;
    // The last check found what no --force can film (no schedule at all).
    bool m_unfilmable = false;
};
