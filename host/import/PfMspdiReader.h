#pragma once

#include "PfSchedule.h"

#include <QByteArray>
#include <QString>

// Reads a Microsoft Project XML (MSPDI) file: Project/Tasks/Task with its
// UID, name, WBS code, outline level, scheduled, actual and baseline dates,
// summary and milestone flags and predecessor links. The outline gives each
// task the names of the summary tasks above it as its breakdown path.
class PfMspdiReader {
public:
    // False with a one-line reason naming the line; the schedule is then
    // left as it was.
    static bool Read(const QByteArray& bytes, PfSchedule& schedule, QString* error);
    static bool ReadFile(const QString& path, PfSchedule& schedule, QString* error);
};
