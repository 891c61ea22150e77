#include "PfSchedule.h"

namespace {
QDate firstOf(const QDate& a, const QDate& b, const QDate& c) { return a.isValid() ? a : b.isValid() ? b : c; }
} // namespace

QDate PfScheduleTask::Start() const { return firstOf(actualStart, earlyStart, plannedStart); }

QDate PfScheduleTask::Finish() const { return firstOf(actualFinish, earlyFinish, plannedFinish); }

const PfScheduleTask* PfSchedule::Find(const QString& codeOrName) const
{
    for (const PfScheduleTask& task : tasks)
        if (task.code == codeOrName || task.name == codeOrName)
            return &task;
    return nullptr;
}
