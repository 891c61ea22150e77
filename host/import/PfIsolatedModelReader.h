#pragma once

#include "PfModelReader.h"

#include <QString>

#include <functional>

class QIODevice;

// Reads a model in a child process (the command line's read-model command),
// which streams the products back: a reader that crashes, hangs or spoils
// process-wide state (the number locale, its own globals) on a damaged or
// hostile file cannot take the application with it.
class PfIsolatedModelReader : public PfModelReader {
public:
    // program: a kvxhost; silence: the longest the child may go without
    // telling anything before it is taken for hung, in milliseconds.
    explicit PfIsolatedModelReader(QString program, int silence = 120000);

    bool Read(const QString& path, const Take& take, const Progress& progress, Summary& summary,
              QString* error) override;

    // Called often while the child reads (with the products done and found
    // so far), so that a window can answer its user meanwhile; false stops
    // the child, and Read then fails with kCancelled.
    using Waiting = std::function<bool(int done, int found)>;
    void SetWaiting(Waiting waiting) { m_waiting = std::move(waiting); }
    static const QString kCancelled;

    // The kvxhost beside the running program, unless another was set.
    static QString DefaultProgram();
    static void SetDefaultProgram(const QString& program);

    // The child's side: reads the file with the reader for its kind and
    // streams what it gives to out; false with the reason (streamed too).
    static bool Serve(const QString& path, QIODevice& out);
    // The reader for a file's kind (.ifc, .glb, .gltf, .obj, .stl), null for
    // another kind.
    static std::unique_ptr<PfModelReader> ReaderFor(const QString& path);

private:
    QString m_program;
    int m_silence;
    Waiting m_waiting;
};
