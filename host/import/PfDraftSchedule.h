#pragma once

#include "PfSchedule.h"

#include <QDate>

class PfDbDatabase;

// A schedule made up from the model alone, for a model that brings none: a
// task for each storey and element type, foundations first, then storey by
// storey from the lowest up (columns, walls, beams, slabs, stairs, then the
// rest), roofs last. Every task is named as a draft, so that nobody takes
// its dates for a plan.
class PfDraftSchedule {
public:
    static const QString kProject; // "草稿进度"

    // Tasks back to back from firstDay; a task takes a day for every 50
    // elements, at most five. Empty when the model has no elements.
    static PfSchedule Make(const PfDbDatabase* database, const QDate& firstDay);
};
