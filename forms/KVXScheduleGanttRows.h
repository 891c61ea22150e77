#pragma once

#include <QDate>
#include <QString>

#include <map>
#include <vector>

class KVXAnimation;
class PfDbDocument;

// The rows of the schedule's Gantt view, worked out from the records: a row
// for each imported task (its records together, from the first start to the
// last end) and one for each record added by hand, in start order. A row's
// state is what its bar's colour tells.
class KVXScheduleGanttRows {
public:
    enum class State {
        Linked,    // a task's records, all on elements the document has
        ByHand,    // a record added by hand
        Conflict,  // a record of the row is in conflict (overlap, bad dates)
        Unlinked,  // a record's element is gone from the document
    };
    struct Row {
        QString task; // the task's id; empty for a record added by hand
        QString name;
        QDate start, end;
        State state = State::Linked;
        std::vector<int> numbers; // the records
    };

    // conflicts: the record numbers the schedule check found faulty.
    static std::vector<Row> Build(const std::vector<KVXAnimation*>& records, const std::vector<int>& conflicts,
                                  const PfDbDocument* document);
    static QString StateText(State state);
};
