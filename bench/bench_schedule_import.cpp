// A big project's schedule brought into its model: 10,000 P6 tasks under a
// breakdown by storey, linked to 50,000 elements (five a task, by the task
// code at the head of the element's name) and made into records, each stage
// timed; and the XER reader's throughput against a plain read of the file.

#include "animation/KVXEntryPoint.h"
#include "animation/KVXTaskRecords.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/import/PfScheduleLinker.h"
#include "host/import/PfXerReader.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfHostClasses.h"
#include "host/vpe/geometry/CBody.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <cstdio>

namespace {

constexpr int kTasks = 10000;
constexpr int kElementsATask = 5;
constexpr int kStoreys = 40;

QString taskCode(int task) { return QStringLiteral("T%1").arg(task, 5, 10, QLatin1Char('0')); }

void addElements(PfDbDatabase* database)
{
    for (int task = 0; task < kTasks; ++task)
        for (int k = 0; k < kElementsATask; ++k) {
            auto* element = new KVX3DElementObject();
            element->SetName(QStringLiteral("%1-%2").arg(taskCode(task)).arg(k).toStdWString());
            element->SetProperty(PfDbElement::kStoreyProperty, QStringLiteral("Level %1").arg(task % kStoreys));
            const double x = (task % 100) * 1000.0 + k * 200.0, y = (task / 100) * 1000.0;
            element->AddBody(vpe::CBody::CreateBox({x, y, 0}, {x + 150, y + 800, 3000}));
            database->GetModelSpace()->Add(element);
        }
}

QByteArray xer()
{
    QByteArray text;
    QTextStream out(&text);
    out << "ERMHDR\t8.4\t2026-01-05\tProject\n%T\tPROJECT\n%F\tproj_id\tproj_short_name\n%R\t1\tTower\n"
        << "%T\tPROJWBS\n%F\twbs_id\tproj_id\tproj_node_flag\twbs_name\tparent_wbs_id\n";
    for (int storey = 0; storey < kStoreys; ++storey)
        out << "%R\t" << 100 + storey << "\t1\tN\tLevel " << storey << "\t\n";
    out << "%T\tTASK\n%F\ttask_id\tproj_id\twbs_id\ttask_code\ttask_name\ttask_type\ttarget_start_date\t"
        << "target_end_date\n";
    const QDate first(2026, 3, 2);
    for (int task = 0; task < kTasks; ++task) {
        const QDate start = first.addDays(task / 20);
        out << "%R\t" << task + 1 << "\t1\t" << 100 + task % kStoreys << '\t' << taskCode(task) << "\tInstall "
            << taskCode(task) << "\tTT_Task\t" << start.toString(Qt::ISODate) << " 08:00\t"
            << start.addDays(2).toString(Qt::ISODate) << " 17:00\n";
    }
    out << "%E\n";
    out.flush();
    return text;
}

double seconds(const QElapsedTimer& timer) { return timer.nsecsElapsed() / 1e9; }

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    PfHostRegisterClasses();
    PfRxEntryPoint(1, nullptr);
    PfDbDocument* document = PfDocManagerPtr()->NewDocument();
    addElements(document->GetDatabase());
    PfGsModelView::Attach(document);

    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("tower.xer"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(xer()) < 0)
        return 1;
    file.close();
    QElapsedTimer timer;
    timer.start();
    file.open(QIODevice::ReadOnly);
    const qint64 bytes = file.readAll().size();
    file.close();
    const double plainRead = seconds(timer);

    timer.start();
    PfSchedule schedule;
    QString error;
    if (!PfXerReader::ReadFile(path, schedule, &error)) {
        std::printf("%s\n", qPrintable(error));
        return 1;
    }
    const double parse = seconds(timer);

    timer.start();
    PfScheduleLinkRules rules;
    rules.Parse(QStringLiteral("name prefix code"), QString(), &error);
    PfScheduleLinker::Report report;
    const std::vector<PfTaskRecord> records = PfScheduleLinker(document->GetDatabase()).Link(schedule, rules, report);
    const double link = seconds(timer);

    timer.start();
    KVXTaskRecords::Outcome outcome;
    KVXTaskRecords::Apply(document, records, outcome, &error);
    const double make = seconds(timer);

    timer.start();
    KVXTaskRecords::Outcome again;
    KVXTaskRecords::Apply(document, records, again, &error);
    const double reimport = seconds(timer);

    const double megabytes = bytes / 1e6;
    std::printf("schedule: %zu tasks, %.1f MB of XER; %d elements; %d records (%s)\n", schedule.tasks.size(),
                megabytes, report.elements, report.records, qPrintable(outcome.Text()));
    std::printf("XER reading  %7.3f s  %6.1f MB/s   plain read %7.4f s  %7.1f MB/s   ratio %.1f\n", parse,
                megabytes / parse, plainRead, megabytes / plainRead, parse / plainRead);
    std::printf("linking      %7.3f s\nrecords      %7.3f s\nall          %7.3f s   (target under 2 s)\n", link,
                make, parse + link + make);
    std::printf("re-import    %7.3f s  (%s)\n", reimport, qPrintable(again.Text()));
    timer.start();
    PfDocManagerPtr()->CloseAll();
    std::printf("closing      %7.3f s  (the document with its elements and records)\n", seconds(timer));
    return 0;
}
