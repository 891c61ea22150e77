#pragma once

#include "PfSchedule.h"

#include <QString>

// Reads a schedule with the reader its file's suffix names: .xer (P6),
// .xml (Microsoft Project), .csv or .txt (a table), .ifc (the work schedule
// inside a model).
class PfScheduleReader {
public:
    // The suffixes read, lower case, without the dot.
    static QStringList Suffixes();
    // False with a one-line reason naming the file; the schedule is then
    // left as it was.
    static bool ReadFile(const QString& path, PfSchedule& schedule, QString* error);
};
