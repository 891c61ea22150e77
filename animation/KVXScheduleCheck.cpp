#include "KVXScheduleCheck.h"

#include "KVXAnimatorManager.h"
#include "KVXScheduleVideo.h"
#include "KVXTowerAnimation.h"

#include "host/db/PfDbDocument.h"
#include "host/db/PfDbElement.h"
#include "host/db/PfDocManager.h"

#include <algorithm>
#include <cmath>

const wchar_t* const KVXScheduleCheck::kCommandName = L"KVX_CHECK_SCHEDULE";
const wchar_t* const KVXScheduleCheck::kListCommandName = L"KVX_LIST_SCHEDULE";

namespace {

QString dayText(const QDate& date) { return date.toString(QStringLiteral("yyyy-MM-dd")); }

QString kindOf(const KVXAnimation* record)
{
    if (dynamic_cast<const KVXTowerAnimation*>(record))
        return QStringLiteral("tower crane");
    switch (record->getAnimationType()) {
    case KVXAnimation::Construction: return QStringLiteral("construction");
    case KVXAnimation::Demolition: return QStringLiteral("demolition");
    case KVXAnimation::Path: return QStringLiteral("path");
    case KVXAnimation::Rotation: return QStringLiteral("rotation");
    case KVXAnimation::Emphasis: return QStringLiteral("emphasis");
    }
    return QStringLiteral("record");
}

// The element's name, or empty when the document has no such element.
QString elementName(PfDbDocument* document, const KVXAnimation* record, bool& found)
{
    PfDbObject* object = document ? document->GetItem(static_cast<PfDbHandle>(record->getObjId())) : nullptr;
    found = object != nullptr;
    const PfDbElement* element = PfDbElement::Cast(object);
    return element ? QString::fromStdWString(element->GetName()) : QString();
}

// "record 7 (3号楼 4层, demolition)"
QString recordText(PfDbDocument* document, const KVXAnimation* record)
{
    bool found = false;
    const QString name = elementName(document, record, found);
    return QStringLiteral("record %1 (%2%3)")
        .arg(record->getNumber())
        .arg(name.isEmpty() ? QString() : name + QStringLiteral(", "), kindOf(record));
}

// What keeps one record from playing; empty when nothing does.
QString recordProblem(PfDbDocument* document, const KVXAnimation* record)
{
    bool found = false;
    elementName(document, record, found);
    const QDate& start = record->getStartDate();
    const QDate& end = record->getEndDate();
    if (!found)
        return QStringLiteral("its element #%1 is not in the document").arg(record->getObjId());
    if (!start.isValid())
        return QStringLiteral("its start date is missing or impossible");
    if (!end.isValid())
        return QStringLiteral("its end date is missing or impossible");
    if (end < start)
        return QStringLiteral("it ends on %1, before it starts on %2").arg(dayText(end), dayText(start));
    if (end == start)
        return QStringLiteral("it ends on the day it starts, %1: it lasts no time").arg(dayText(start));
    if (record->getLoopPlayback() && !(record->getLoopEndDate() > start))
        return QStringLiteral("its repetition ends on %1, not after its start on %2")
            .arg(dayText(record->getLoopEndDate()), dayText(start));
    return QString();
}

bool playable(PfDbDocument* document, const KVXAnimation* record)
{
    return recordProblem(document, record).isEmpty();
}

using Finding = KVXScheduleCheck::Finding;

void add(KVXScheduleCheck::Report& report, Finding::Kind kind, const QString& text)
{
    report.findings.push_back({kind, text});
}

void checkRecords(PfDbDocument* document, KVXAnimatorManager* schedule, KVXScheduleCheck::Report& report)
{
    for (KVXAnimation* record : schedule->getAnimationVector()) {
        const QString problem = recordProblem(document, record);
        if (!problem.isEmpty()) {
            add(report, Finding::Problem, QStringLiteral("%1: %2").arg(recordText(document, record), problem));
            continue;
        }
        for (const KVXAnimatorManager::ConflictInfo& overlap : schedule->findConflictAnimation(record)) {
            // Each pair once.
            if (overlap.conflictNumber < record->getNumber())
                continue;
            add(report, Finding::Warning,
                QStringLiteral("%1 and record %2 change the same element on the same days")
                    .arg(recordText(document, record))
                    .arg(overlap.conflictNumber));
        }
    }
}

// The records that open and close the schedule, for a span that looks wrong.
void checkSpan(PfDbDocument* document, KVXAnimatorManager* schedule, KVXScheduleCheck::Report& report)
{
    const KVXAnimation* first = nullptr;
    const KVXAnimation* last = nullptr;
    for (KVXAnimation* record : schedule->getAnimationVector()) {
        if (!playable(document, record))
            continue;
        if (!first || record->getStartDate() < first->getStartDate())
            first = record;
        const QDate end = std::max(record->getEndDate(), record->getLoopPlayback() ? record->getLoopEndDate() : QDate());
        if (!last || end > std::max(last->getEndDate(), last->getLoopPlayback() ? last->getLoopEndDate() : QDate()))
            last = record;
    }
    if (!first || !last)
        return;
    const qint64 days = schedule->getAllAnimationsStartDate().daysTo(schedule->getAllAnimationsEndDate());
    if (days > KVXScheduleCheck::kLongSpanDays)
        add(report, Finding::Warning,
            QStringLiteral("the schedule spans %1 years, from %2 (%3) to %4 (%5): is a year mistyped?")
                .arg(days / 365.25, 0, 'f', 1)
                .arg(dayText(first->getStartDate()), recordText(document, first),
                     dayText(schedule->getAllAnimationsEndDate()), recordText(document, last)));
}

} // namespace

bool KVXScheduleCheck::Report::HasProblems() const
{
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding& finding) { return finding.kind != Finding::Warning; });
}

void KVXScheduleCheck::Report::Force()
{
    for (Finding& finding : findings)
        if (finding.kind == Finding::Problem)
            finding.kind = Finding::Warning;
}

QString KVXScheduleCheck::Report::Text() const
{
    QString text = summary + QLatin1Char('\n');
    for (const Finding& finding : findings)
        text += QLatin1String(finding.kind == Finding::Unfilmable ? "cannot film: "
                              : finding.kind == Finding::Problem  ? "problem: "
                                                                  : "warning: ") +
                finding.text + QLatin1Char('\n');
    return text;
}

QString KVXScheduleCheck::Duration(double seconds)
{
    const qint64 whole = static_cast<qint64>(std::ceil(seconds));
    const qint64 hours = whole / 3600, minutes = whole / 60 % 60, rest = whole % 60;
    if (hours > 0 && minutes == 0 && rest == 0)
        return QStringLiteral("%1 h").arg(hours);
    if (hours > 0)
        return QStringLiteral("%1 h %2 min %3 s").arg(hours).arg(minutes, 2, 10, QLatin1Char('0')).arg(rest, 2, 10,
                                                                                                    QLatin1Char('0'));
    if (minutes > 0)
        return QStringLiteral("%1 min %2 s").arg(minutes).arg(rest, 2, 10, QLatin1Char('0'));
    return QStringLiteral("%1 s").arg(rest);
}

KVXScheduleCheck::Report KVXScheduleCheck::Check(double secondsPerDay)
{
    Report report;
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    const std::vector<KVXAnimation*> records = schedule->getAnimationVector();
    if (records.empty()) {
        report.summary = QStringLiteral("no schedule: the document has no animation records");
        add(report, Finding::Unfilmable, QStringLiteral("there is no schedule to film"));
        return report;
    }
    const double keptScale = schedule->getDayToSeconds();
    schedule->setDayToSeconds(secondsPerDay);
    schedule->updateAllAnimationsDateRange();
    const double length = schedule->getAllAnimationsTimeLength();
    const int frames = KVXScheduleVideo::FrameCount(length);
    const double filmSeconds = frames / double(KVXScheduleVideo::kFramesPerSecond);
    const QDate start = schedule->getAllAnimationsStartDate();
    const QDate end = schedule->getAllAnimationsEndDate();
    report.summary = QStringLiteral("%1 records, %2 days from %3 to %4; at %5 s a day a film of %6 (%7 frames)")
                         .arg(records.size())
                         .arg(start.daysTo(end))
                         .arg(dayText(start), dayText(end))
                         .arg(secondsPerDay)
                         .arg(Duration(filmSeconds))
                         .arg(frames);
    checkRecords(document, schedule, report);
    checkSpan(document, schedule, report);
    if (length * KVXScheduleVideo::kFramesPerSecond < 1.0)
        add(report, Finding::Unfilmable,
            QStringLiteral("at %1 s a day the schedule's %2 days pass in less than a frame").arg(secondsPerDay).arg(
                start.daysTo(end)));
    else if (filmSeconds > kFilmLimitSeconds)
        add(report, Finding::Problem,
            QStringLiteral("the film would last %1, over the limit of %2: shorten the days or check the dates")
                .arg(Duration(filmSeconds), Duration(kFilmLimitSeconds)));
    else if (filmSeconds > kLongFilmSeconds)
        add(report, Finding::Warning, QStringLiteral("the film will last %1").arg(Duration(filmSeconds)));
    schedule->setDayToSeconds(keptScale);
    schedule->updateAllAnimationsDateRange();
    return report;
}

Pfad::Error KVXScheduleCheck::RunCommand(const QStringList& arguments, QString* message)
{
    double secondsPerDay = 1.0;
    bool force = false;
    for (const QString& word : arguments) {
        bool ok = true;
        if (word == QLatin1String("force"))
            force = true;
        else if (word.startsWith(QLatin1String("seconds-per-day=")))
            secondsPerDay = word.section(QLatin1Char('='), 1).toDouble(&ok);
        else
            ok = false;
        if (!ok || !(secondsPerDay > 0.0)) {
            if (message)
                *message = QStringLiteral("unknown schedule check word: %1").arg(word);
            return Pfad::eInvalidInput;
        }
    }
    Report report = Check(secondsPerDay);
    if (force)
        report.Force();
    if (message)
        *message = report.Text();
    return report.HasProblems() ? Pfad::eNotApplicable : Pfad::eOk;
}

Pfad::Error KVXScheduleCheck::RunListCommand(const QStringList& arguments, QString* message)
{
    if (!arguments.isEmpty()) {
        if (message)
            *message = QStringLiteral("the record list takes no words: %1").arg(arguments.join(QLatin1Char(' ')));
        return Pfad::eInvalidInput;
    }
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    std::vector<KVXAnimation*> records = KVXAnimatorManager::getInstance()->getAnimationVector();
    std::sort(records.begin(), records.end(),
              [](const KVXAnimation* a, const KVXAnimation* b) { return a->getNumber() < b->getNumber(); });
    QString text = QStringLiteral("%1 records\n").arg(records.size());
    for (const KVXAnimation* record : records) {
        bool found = false;
        const QString name = elementName(document, record, found);
        text += QStringLiteral("  %1  %2  %3  %4 .. %5  %6 days\n")
                    .arg(record->getNumber(), 4)
                    .arg(kindOf(record), -12)
                    .arg(found ? (name.isEmpty() ? QStringLiteral("#%1").arg(record->getObjId()) : name)
                               : QStringLiteral("#%1 (missing)").arg(record->getObjId()),
                         -16)
                    .arg(record->getStartDate().isValid() ? dayText(record->getStartDate()) : QStringLiteral("?"),
                         record->getEndDate().isValid() ? dayText(record->getEndDate()) : QStringLiteral("?"))
                    .arg(record->getStartDate().isValid() && record->getEndDate().isValid()
                             ? QString::number(record->getStartDate().daysTo(record->getEndDate()))
                             : QStringLiteral("?"));
    }
    if (message)
        *message = text;
    return Pfad::eOk;
}
