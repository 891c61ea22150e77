#pragma once

#include <QStringList>

class QTextStream;

// The kvxhost command line:
//   kvxhost demo-site --out FILE.kvx
//   kvxhost render FILE.kvx --out FILE.png [--size WxH] [--camera ex,ey,ez,tx,ty,tz]
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
    int demoSite(const Options& options);
    int render(const Options& options);
    int fail(const QString& message, int code = 1);

    QTextStream& m_out;
    QTextStream& m_err;
};
