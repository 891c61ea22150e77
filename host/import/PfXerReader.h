#pragma once

#include "PfSchedule.h"

#include <QByteArray>
#include <QString>

// Reads a P6 XER export: tab-separated tables (%T name, %F fields, %R rows,
// %E at the end) in the exporting machine's code page (UTF-8 when the bytes
// are valid UTF-8, else Windows-1252). Tasks come from TASK, their work
// breakdown from PROJWBS, their project from PROJECT and their links from
// TASKPRED; several projects in one file are kept apart by name.
class PfXerReader {
public:
    // False with a one-line reason naming the line; the schedule is then
    // left as it was.
    static bool Read(const QByteArray& bytes, PfSchedule& schedule, QString* error);
    static bool ReadFile(const QString& path, PfSchedule& schedule, QString* error);
};
