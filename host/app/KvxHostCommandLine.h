#pragma once

#include <QStringList>

class PfDbDocument;
class QString;
class QTextStream;

// The kvxhost command line:
//   kvxhost demo-site --out FILE.kvx
//   kvxhost render FILE.kvx --out FILE.png [--size WxH] [--camera ex,ey,ez,tx,ty,tz] [--date yyyy-MM-dd]
//   kvxhost play FILE.kvx --out FILE.mp4 [--size WxH] [--seconds-per-day S] [--poster FILE.png]
//                [--camera ex,ey,ez,tx,ty,tz]
//   kvxhost keyframes FILE.kvx [--add TIME_MS --camera ex,ey,ez,tx,ty,tz [--date yyyy-MM-dd]
//                | --delete TIME_MS] [--out FILE.kvx]
// play films the document's schedule through the animation module;
//   kvxhost export FILE.kvx --out FILE.mp4 [--size WxH]
// Films and pictures of a date carry a caption (the date, the weekday, how
// far through the schedule, and --title TEXT above) unless --no-caption;
// keyframes lists the document's fly-through key frames or adds or deletes
// one moment's, saving the document (or a copy, with --out) atomically.
// Any fault (an unknown command or option, a missing or damaged file, an
// unwritable output) is one line on the error stream and a non-zero result.
class KvxHostCommandLine {
public:
    KvxHostCommandLine(QTextStream& out, QTextStream& err);

    // The arguments without the program name; answers the exit code.
    int Run(const QStringList& arguments);

private:
    struct Options;

    bool parse(const QStringList& arguments, Options& options);
    // Every output's folder can be written and no output is the input
    // document, checked before any work; the exit code of a refusal, or 0.
    int checkOutputs(const Options& options);
    // The usage of one command, or of all for "--help"; 0, or 2 for an
    // unknown command.
    int help(const QString& command);
    int demoSite(const Options& options);
    int render(const Options& options);
    int play(const Options& options);
    int keyFrames(const Options& options);
    int exportFlyThrough(const Options& options);
    // Opens the document, shows it at the size and puts the camera where the
    // options say (or on a three-quarter view of the whole model).
    PfDbDocument* openAndShow(const Options& options, QString& error);
    int fail(const QString& message, int code = 1);

    QTextStream& m_out;
    QTextStream& m_err;
};
