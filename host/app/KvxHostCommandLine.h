#pragma once

#include "host/rx/PfadError.h"

#include <QStringList>

class PfDbDocument;
struct KvxCommandLineOptions;
class QString;
class QTextStream;

// The kvxhost command line: demo-site, render, play, export, keyframes, check,
// list, live, import, schedule and 4d (kvxhost --help tells what each does and takes). Every output is
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
    // Links a schedule to the document's elements and makes their records.
    int linkSchedule(const Options& options);
    // Model and schedule to a film in one go, each step timed.
    int film4d(const Options& options);
    // Imports the model into the document, printing the summary.
    bool importInto(PfDbDocument* document, const QString& model, QString& error);
    // Reads, links and records the schedule, printing the link report.
    bool importSchedule(PfDbDocument* document, const Options& options, QString& error);
    // Serves crane readings until the program is stopped.
    int craneSimulator(const Options& options);
    // Opens the document, shows it at the size and puts the camera where the
    // options say (or on the overview of the whole model).
    PfDbDocument* openAndShow(const Options& options, QString& error);
    // Shows the document at the options' size and camera.
    void show(PfDbDocument* document, const Options& options);
    // Runs one of the animation module's commands; its answer in message.
    Pfad::Error runModuleCommand(const wchar_t* name, const QStringList& words, QString& message);
    // The schedule check's lines: the summary on the output, each finding on
    // the error stream; the exit code when the check stands in the way.
    int printCheck(const Options& options, bool force);
    // Films the current document's schedule to the options' --out.
    bool film(const Options& options, QString& error);
    int fail(const QString& message, int code = 1);
    // The exit code of a module command's result: bad words are bad usage.
    static int exitCodeOf(Pfad::Error result);

    QTextStream& m_out;
    QTextStream& m_err;
    // The last check found what no --force can film (no schedule at all).
    bool m_unfilmable = false;
    // The exit code of the last film that failed.
    int m_filmExitCode = 1;
    // The last schedule imported was a draft made from the model.
    bool m_draftSchedule = false;
};
