#pragma once

#include "host/import/PfSchedule.h"
#include "host/import/PfScheduleLinker.h"

#include <QDate>
#include <QString>

#include <functional>

class PfDbDocument;

// Brings a schedule into a document: reads it (or the model's own, or makes
// a draft), links its tasks to the elements by the rules and has the
// animation module make the records. Used by the command line and the
// application alike.
class KvxScheduleImport {
public:
    enum class Source { File, Model, Draft };
    struct Request {
        QString schedule; // empty: the model's own schedule, else a draft
        QString model;    // the model file the document was imported from, if known
        QString rules;    // a rules file; empty: rulesText
        QString rulesText; // rules as written; empty too: the default rules
        QDate draftStart; // the first day of a draft
    };
    struct Result {
        Source source = Source::File;
        PfSchedule schedule;
        PfScheduleLinker::Report report;
        QString records; // the module's answer
        QString SourceText() const;
    };
    // Makes the records of the words (PfTaskRecord words); false with the
    // reason in answer.
    using MakeRecords = std::function<bool(const QStringList& words, QString& answer)>;

    // The animation module's record making, through the host's commands;
    // it answers that the module is missing when it is.
    static MakeRecords ModuleRecords();

    // False with a one-line reason; the report is filled as far as linking
    // got. Nothing is changed unless records are made.
    static bool Run(PfDbDocument* document, const Request& request, const MakeRecords& makeRecords, Result& result,
                    QString* error);
};
