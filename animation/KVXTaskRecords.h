#pragma once

#include "host/model/PfTaskRecord.h"
#include "host/rx/PfadError.h"

#include <QStringList>

#include <vector>

class PfDbDocument;

// Makes the records a linked schedule asks for, in one undo step named
// "导入进度计划": construction from the bottom up by the cut plane (layer by
// layer where asked), demolition from the top down, emphasis for milestones.
// A record remembers its task, so that the same schedule imported again,
// changed, moves the records it made before instead of adding more.
class KVXTaskRecords {
public:
    static const wchar_t* const kCommandName;
    static const QString kUndoName;

    struct Outcome {
        int added = 0;
        int moved = 0; // dates or layers changed
        int unchanged = 0;
        QString Text() const;
    };

    // The command: one PfTaskRecord word each, for the current document.
    static Pfad::Error RunCommand(const QStringList& arguments, QString* message);
    // False, changing nothing, when an element is not in the document.
    static bool Apply(PfDbDocument* document, const std::vector<PfTaskRecord>& records, Outcome& outcome,
                      QString* error);
};
