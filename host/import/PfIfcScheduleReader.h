#pragma once

#include "PfSchedule.h"

#include <QByteArray>
#include <QString>

// Reads the work schedule an IFC4 model carries in its STEP text: its tasks
// with their IfcTaskTime dates, the nesting of tasks as the breakdown path
// (a task that nests others is a summary), IfcRelSequence links as
// predecessors, and the products each task is assigned to (either way round:
// the task assigned to a product or products assigned to the task) as the
// elements' GlobalIds. Only the instances a schedule needs are kept, plus the
// GlobalId of every other, so large models are read in one pass without
// their geometry. The text is UTF-8 when its bytes are valid UTF-8, else
// ISO 8859-1; the file's own escapes are decoded either way.
class PfIfcScheduleReader {
public:
    // False with a one-line reason naming the line; the schedule is then
    // left as it was.
    static bool Read(const QByteArray& bytes, PfSchedule& schedule, QString* error);
    static bool ReadFile(const QString& path, PfSchedule& schedule, QString* error);
    // Whether a STEP file names any IfcTask, without reading it: lets a
    // model import decide whether the model brings its own schedule.
    static bool HasSchedule(const QByteArray& bytes);
};
