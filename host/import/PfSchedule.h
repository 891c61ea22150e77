#pragma once

#include <QByteArray>
#include <QDate>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

// One activity of a schedule as its planning tool gave it.
struct PfScheduleTask {
    QString id;   // the tool's own key (task_id, UID)
    QString code; // what planners call it by (A1010, WBS code)
    QString name;
    QString project;
    // The work breakdown above it, outermost first.
    QStringList wbsPath;
    // Planned (baseline), early and actual dates; null when not given.
    QDate plannedStart, plannedFinish;
    QDate earlyStart, earlyFinish;
    QDate actualStart, actualFinish;
    bool milestone = false;
    // Groups other tasks; kept for the tree, never animated.
    bool summary = false;
    QString activityType;
    QStringList predecessors; // ids
    // Which elements the task builds, when the file says so itself (a CSV
    // column); linking rules read it.
    QString elementFilter;
    // The GlobalIds of the elements an IFC file assigns the task to.
    QStringList elementGlobalIds;
    // The elements a draft made from the model itself names directly.
    std::vector<quint64> elementHandles;

    // The dates a film shows: actual where the work was done, else early,
    // else planned.
    QDate Start() const;
    QDate Finish() const;
};

// A schedule read from a file: its tasks in the file's order and how the
// file was read.
struct PfSchedule {
    std::vector<PfScheduleTask> tasks;
    // The text encoding the file was read in ("UTF-8", "Windows-1252").
    QString encoding;
    // For text tables: the delimiter and the date format found.
    QChar delimiter;
    QString dateFormat;
    QStringList projects;

    const PfScheduleTask* Find(const QString& codeOrName) const;
};

// What the schedule readers share.
namespace PfScheduleText {
// Reads the file and hands its bytes to the reader; a failure names the
// file before the reader's reason.
bool ReadFile(const QString& path, const std::function<bool(const QByteArray&, PfSchedule&, QString*)>& read,
              PfSchedule& schedule, QString* error);
// False, with "line N: reason" (the reason alone without a line).
bool Fail(QString* error, qint64 line, const QString& reason);
// The text in UTF-8 when the bytes are valid UTF-8, else in the fallback
// code page; encoding names the one used. A byte-order mark is dropped.
QString Decode(const QByteArray& bytes, const char* fallback, QString& encoding);
} // namespace PfScheduleText
