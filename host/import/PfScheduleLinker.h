#pragma once

#include "PfSchedule.h"
#include "PfScheduleLinkRules.h"

#include "host/model/PfTaskRecord.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class PfDbDatabase;

// Links a schedule's tasks to the model's elements by a planner's rules and
// says what each element becomes: one PfTaskRecord per task and element.
// Summary tasks group others and link nothing. An element claimed by several
// tasks that build it is built by one: the claim of the earlier rule (explicit
// links first), then of the task that starts first; a demolition or a
// milestone of the same element stands beside its construction.
class PfScheduleLinker {
public:
    struct Contest {
        QString element;
        QStringList tasks; // every claimant, the winner first
    };
    struct Report {
        int tasks = 0;     // tasks that can animate (not summaries)
        int summaries = 0; // kept for grouping
        int tasksLinked = 0;
        int elements = 0;
        int elementsLinked = 0;
        int records = 0;
        QStringList tasksWithoutElements;
        QStringList tasksWithoutDates;
        QStringList elementsWithoutTask;
        std::vector<Contest> contests;
        // Several lines, the numbers first, then up to a few names of each list.
        QString Text() const;
    };

    // Reads the elements of the database's model space.
    explicit PfScheduleLinker(const PfDbDatabase* database);
    ~PfScheduleLinker();

    std::vector<PfTaskRecord> Link(const PfSchedule& schedule, const PfScheduleLinkRules& rules,
                                   Report& report) const;

private:
    struct Elements;
    std::unique_ptr<Elements> m_elements;
};
