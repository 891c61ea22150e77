#pragma once

#include <QFile>
#include <QString>

namespace vpe {

// A file written whole or not at all: the bytes go to a partial file beside
// the target (hidden, named after the target and this process), which is
// flushed to disk and then renamed onto the target, and the folder is
// synced so that the rename survives a power cut. An earlier file at the
// target stays as it was until then. Partial files that processes killed
// half-way left behind are removed the next time the target is written.
class CAtomicFile {
public:
    explicit CAtomicFile(const QString& target);
    // Drops the partial file unless it was committed.
    ~CAtomicFile();
    CAtomicFile(const CAtomicFile&) = delete;
    CAtomicFile& operator=(const CAtomicFile&) = delete;

    // False with the reason: the target is a folder or a device, or the
    // partial file cannot be made.
    bool Open(QString* error = nullptr);
    // Where the bytes go between Open and Commit.
    QFile& Device() { return m_partial; }
    // Flushes, renames onto the target, syncs the folder; false with the
    // reason (a full disk named as such), the target then as it was.
    bool Commit(QString* error = nullptr);
    void Cancel();

    // The partial file of this process for a target.
    static QString PartialPathFor(const QString& target);
    // Partial files of the target whose process is gone.
    static void RemoveStalePartials(const QString& target);

private:
    bool fail(QString* error, const QString& reason);

    QString m_target;
    QFile m_partial;
    bool m_committed = false;
};

} // namespace vpe
