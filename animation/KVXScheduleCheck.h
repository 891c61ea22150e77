#pragma once

#include "host/rx/PfadError.h"

#include <QString>
#include <QStringList>

#include <vector>

// What stands in the way of filming the current document's schedule, found
// before any frame is drawn: records that cannot play (an element that is not
// in the document, a date that is missing or impossible, an end before the
// start), records of one element that overlap, and a schedule whose span or
// film is unreasonably long (most often a mistyped year).
class KVXScheduleCheck {
public:
    static const wchar_t* const kCommandName;
    static const wchar_t* const kListCommandName;
    // A film longer than this is worth a word; one longer than the limit is
    // refused unless forced.
    static constexpr double kLongFilmSeconds = 20 * 60;
    static constexpr double kFilmLimitSeconds = 60 * 60;
    // Ten years.
    static constexpr int kLongSpanDays = 3653;

    struct Finding {
        // A problem keeps the film from being made unless forced; nothing
        // makes a film of what cannot be filmed.
        enum Kind { Warning, Problem, Unfilmable };
        Kind kind = Warning;
        QString text;
    };
    struct Report {
        // One line: how many records, the span and the film's length.
        QString summary;
        std::vector<Finding> findings;
        bool HasProblems() const;
        // Problems become warnings; what cannot be filmed stays.
        void Force();
        // The summary, then a line per finding ("cannot film: …",
        // "problem: …", "warning: …").
        QString Text() const;
    };

    // The current document's schedule as a film at that many seconds a day.
    static Report Check(double secondsPerDay);
    // A film's length ("1 h", "1 h 01 min 05 s", "2 min 05 s", "39 s").
    static QString Duration(double seconds);

    // The command: "seconds-per-day=S", "force" (problems are then warnings).
    // The message is the report; eOk when the film can be made,
    // eNotApplicable when a problem stands in the way, eInvalidInput for a
    // word it does not understand.
    static Pfad::Error RunCommand(const QStringList& arguments, QString* message);
    // The records, one line each: number, kind, element, start, end, days.
    static Pfad::Error RunListCommand(const QStringList& arguments, QString* message);
};
