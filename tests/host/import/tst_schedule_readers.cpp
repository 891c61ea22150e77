#include "host/import/PfCsvScheduleReader.h"
#include "host/import/PfMspdiReader.h"
#include "host/import/PfXerReader.h"

#include "tests/support/QtPrinters.h"

#include <QTextCodec>

#include <gtest/gtest.h>

namespace {

const QString kSchedules = QStringLiteral(KVX_TEST_DATA "/schedules/");

// A small export: two projects, a work breakdown two deep, a milestone and a
// link, the names in the file's code page.
QByteArray xer(const QString& taskName, const char* codec, const QString& start = QStringLiteral("2026-03-02 08:00"))
{
    const QString text = QStringLiteral(
        "ERMHDR\t8.4\t2026-01-05\tProject\n"
        "%T\tPROJECT\n%F\tproj_id\tproj_short_name\n%R\t1\tB1\n%R\t2\tSite\n"
        "%T\tPROJWBS\n%F\twbs_id\tproj_id\tproj_node_flag\twbs_name\tparent_wbs_id\n"
        "%R\t10\t1\tY\tBlock 1\t\n%R\t11\t1\tN\tStructure\t10\n%R\t12\t1\tN\tLevel 2\t11\n"
        "%T\tTASK\n%F\ttask_id\tproj_id\twbs_id\ttask_code\ttask_name\ttask_type\ttarget_start_date\ttarget_end_date\t"
        "early_start_date\tearly_end_date\tact_start_date\tact_end_date\n"
        "%R\t100\t1\t12\tA100\t%1\tTT_Task\t%2\t2026-03-06 17:00\t\t\t\t\n"
        "%R\t101\t2\t\tM1\tHanded over\tTT_FinMile\t2026-03-09 08:00\t2026-03-09 08:00\t\t\t\t\n"
        "%T\tTASKPRED\n%F\ttask_pred_id\ttask_id\tpred_task_id\n%R\t1\t101\t100\n"
        "%E\n").arg(taskName, start);
    return QTextCodec::codecForName(codec)->fromUnicode(text);
}

TEST(XerReader, readsTheExportOfARealProject)
{
    PfSchedule schedule;
    QString error;
    ASSERT_TRUE(PfXerReader::ReadFile(kSchedules + QStringLiteral("mpxj_percent-complete-8.4.xer"), schedule, &error))
        << error.toStdString();
    EXPECT_EQ(schedule.tasks.size(), 12u);
    EXPECT_EQ(schedule.encoding, QStringLiteral("Windows-1252")) << "its currency signs are no UTF-8";
    EXPECT_EQ(schedule.projects, QStringList{"EC00640"});
    const PfScheduleTask* quarter = schedule.Find(QStringLiteral("A1010"));
    ASSERT_NE(quarter, nullptr);
    EXPECT_EQ(quarter->name, QStringLiteral("Duration 25%"));
    EXPECT_EQ(quarter->actualStart, QDate(2015, 2, 24));
    EXPECT_EQ(quarter->plannedFinish, QDate(2015, 7, 13));
    EXPECT_EQ(quarter->Start(), QDate(2015, 2, 24));
    EXPECT_EQ(quarter->Finish(), QDate(2015, 7, 13));
    EXPECT_FALSE(schedule.Find(QStringLiteral("A1000"))->actualStart.isValid()) << "not started";
    EXPECT_TRUE(quarter->wbsPath.isEmpty()) << "straight under the project";
}

TEST(XerReader, keepsNamesInTheFilesCodePageProjectsBreakdownMilestonesAndLinks)
{
    for (const auto& [name, codec] : {std::pair{QStringLiteral("Café slab"), "Windows-1252"},
                                      std::pair{QStringLiteral("二层楼板浇筑"), "UTF-8"}}) {
        PfSchedule schedule;
        QString error;
        ASSERT_TRUE(PfXerReader::Read(xer(name, codec), schedule, &error)) << error.toStdString();
        EXPECT_EQ(schedule.encoding, QLatin1String(codec));
        ASSERT_EQ(schedule.tasks.size(), 2u);
        const PfScheduleTask& slab = schedule.tasks[0];
        EXPECT_EQ(slab.name, name);
        EXPECT_EQ(slab.wbsPath, (QStringList{"Structure", "Level 2"}));
        EXPECT_EQ(slab.project, QStringLiteral("B1"));
        EXPECT_EQ(slab.Start(), QDate(2026, 3, 2));
        EXPECT_EQ(slab.Finish(), QDate(2026, 3, 6));
        const PfScheduleTask& handover = schedule.tasks[1];
        EXPECT_TRUE(handover.milestone);
        EXPECT_EQ(handover.project, QStringLiteral("Site"));
        EXPECT_EQ(handover.predecessors, QStringList{"100"});
    }
}

TEST(XerReader, damagedFilesAreToldByLineAndChangeNothing)
{
    const QByteArray good = xer(QStringLiteral("Slab"), "UTF-8");
    const struct {
        const char* what;
        QByteArray bytes;
        const char* says;
    } cases[] = {
        {"cut short", good.left(good.indexOf("%T\tTASKPRED")), "cut short"},
        {"no task table", QByteArray(good).replace("%T\tTASK\n", "%T\tJOBS\n"), "no TASK table"},
        {"a bad date", xer(QStringLiteral("Slab"), "UTF-8", QStringLiteral("2026-02-30 08:00")), "line 13: target_start_date"},
        {"not XER", QByteArray("task,start,finish\n"), "not a P6 XER file"},
        {"a row before its fields", QByteArray("ERMHDR\t8.4\n%T\tTASK\n%R\t1\n%E\n"), "line 3"},
    };
    for (const auto& c : cases) {
        PfSchedule schedule;
        schedule.encoding = QStringLiteral("untouched");
        QString error;
        EXPECT_FALSE(PfXerReader::Read(c.bytes, schedule, &error)) << c.what;
        EXPECT_TRUE(error.contains(QLatin1String(c.says))) << c.what << ": " << error.toStdString();
        EXPECT_FALSE(error.contains(QLatin1Char('\n'))) << c.what;
        EXPECT_EQ(schedule.encoding, QStringLiteral("untouched")) << c.what;
    }
}

TEST(MspdiReader, readsOutlinesSummariesMilestonesLinksAndDates)
{
    PfSchedule schedule;
    QString error;
    ASSERT_TRUE(PfMspdiReader::ReadFile(kSchedules + QStringLiteral("mpxj_sample1.xml"), schedule, &error))
        << error.toStdString();
    EXPECT_EQ(schedule.tasks.size(), 23u);
    EXPECT_EQ(schedule.projects, QStringList{"MPXJ Sample"});
    const PfScheduleTask* assigned = schedule.Find(QStringLiteral("Assigned Task 1"));
    ASSERT_NE(assigned, nullptr);
    EXPECT_EQ(assigned->code, QStringLiteral("3.13.1"));
    EXPECT_EQ(assigned->wbsPath, (QStringList{"Task Relationships", "Resource Assignments"})) << "three deep";
    EXPECT_EQ(assigned->Start(), QDate(2003, 1, 7));
    EXPECT_EQ(assigned->Finish(), QDate(2003, 1, 13));
    EXPECT_TRUE(schedule.Find(QStringLiteral("Third task"))->milestone);
    EXPECT_TRUE(schedule.Find(QStringLiteral("Resource Assignments"))->summary);
    EXPECT_EQ(schedule.Find(QStringLiteral("Related Task 1b"))->predecessors, QStringList{"9"});
    EXPECT_EQ(schedule.Find(QStringLiteral("Second Task"))->wbsPath, QStringList{"First Task"});

    ASSERT_TRUE(PfMspdiReader::ReadFile(kSchedules + QStringLiteral("mpxj_mspdirelations.xml"), schedule, &error));
    EXPECT_EQ(schedule.tasks.size(), 6u) << "five and the project's own summary";
    EXPECT_EQ(schedule.Find(QStringLiteral("Task 5"))->predecessors, QStringList{"4"});
}

TEST(MspdiReader, damagedFilesAreToldByLineAndChangeNothing)
{
    const QByteArray task = "<Project xmlns=\"http://schemas.microsoft.com/project\"><Tasks>\n"
                            "<Task><UID>1</UID><Name>Slab</Name><Start>%1</Start></Task>\n</Tasks></Project>\n";
    const struct {
        const char* what;
        QByteArray bytes;
        const char* says;
    } cases[] = {
        {"cut short", QByteArray(task).replace("%1", "2026-03-02T08:00:00").left(60), "line"},
        {"a bad date", QByteArray(task).replace("%1", "2026-02-30T08:00:00"), "line 2: Start of task Slab"},
        {"no tasks", "<Project><Tasks/></Project>", "no tasks"},
        {"not MSPDI", "<html><body/></html>", "not a Microsoft Project XML file"},
    };
    for (const auto& c : cases) {
        PfSchedule schedule;
        schedule.encoding = QStringLiteral("untouched");
        QString error;
        EXPECT_FALSE(PfMspdiReader::Read(c.bytes, schedule, &error)) << c.what;
        EXPECT_TRUE(error.contains(QLatin1String(c.says))) << c.what << ": " << error.toStdString();
        EXPECT_EQ(schedule.encoding, QStringLiteral("untouched")) << c.what;
    }
}

TEST(CsvScheduleReader, findsTheDelimiterTheDateFormatAndTheEncoding)
{
    const struct {
        const char* what;
        QString text;
        const char* codec;
        QChar delimiter;
        const char* format;
        const char* encoding;
        const char* name;
    } cases[] = {
        {"Chinese headers, a quoted comma",
         QStringLiteral("\ufeff名称,开始,结束,编码,类型,构件\n\"二层, 楼板\",2026-03-02,2026-03-06,B2-01,layered,Storey=Level 2\n"),
         "UTF-8", QLatin1Char(','), "yyyy-MM-dd", "UTF-8", "二层, 楼板"},
        {"the national code page, tabs",
         QStringLiteral("任务名称\t开始日期\t结束日期\n二层楼板\t2026/3/2\t2026/3/6\n"), "GB18030", QLatin1Char('\t'),
         "yyyy/M/d", "GB18030", "二层楼板"},
        {"semicolons, dotted dates", QStringLiteral("Task;Start;Finish\nSlab L2;2.3.2026;6.3.2026\n"), "UTF-8",
         QLatin1Char(';'), "d.M.yyyy", "UTF-8", "Slab L2"},
        {"month first, as a day past 12 shows",
         QStringLiteral("name,start,finish\nSlab L2,3/2/2026,3/16/2026 17:00\n"), "UTF-8", QLatin1Char(','),
         "M/d/yyyy", "UTF-8", "Slab L2"},
    };
    for (const auto& c : cases) {
        PfSchedule schedule;
        QString error;
        ASSERT_TRUE(PfCsvScheduleReader::Read(QTextCodec::codecForName(c.codec)->fromUnicode(c.text), schedule, &error))
            << c.what << ": " << error.toStdString();
        EXPECT_EQ(schedule.delimiter, c.delimiter) << c.what;
        EXPECT_EQ(schedule.dateFormat, QLatin1String(c.format)) << c.what;
        EXPECT_EQ(schedule.encoding, QLatin1String(c.encoding)) << c.what;
        ASSERT_EQ(schedule.tasks.size(), 1u) << c.what;
        EXPECT_EQ(schedule.tasks[0].Start(), QDate(2026, 3, 2)) << c.what;
        EXPECT_EQ(schedule.tasks[0].name, QString::fromUtf8(c.name)) << c.what;
        if (&c == &cases[0]) {
            EXPECT_EQ(schedule.tasks[0].code, QStringLiteral("B2-01"));
            EXPECT_EQ(schedule.tasks[0].activityType, QStringLiteral("layered"));
            EXPECT_EQ(schedule.tasks[0].elementFilter, QStringLiteral("Storey=Level 2"));
        }
    }
}

TEST(CsvScheduleReader, damagedTablesAreToldByLineAndChangeNothing)
{
    const struct {
        const char* what;
        const char* text;
        const char* says;
    } cases[] = {
        {"no name column", "start,finish\n2026-03-02,2026-03-06\n", "line 1: the header names no name column"},
        {"a date no format reads", "name,start,finish\nA,2026-03-02,2026-03-06\nB,soon,2026-03-09\n",
         "line 3: no date in \"soon\""},
        {"a finish before the start", "name,start,finish\nA,2026-03-06,2026-03-02\n", "line 2: A finishes before"},
        {"no tasks", "name,start,finish\n\n", "no tasks"},
        {"empty", "", "line 1: no header row"},
    };
    for (const auto& c : cases) {
        PfSchedule schedule;
        schedule.encoding = QStringLiteral("untouched");
        QString error;
        EXPECT_FALSE(PfCsvScheduleReader::Read(QByteArray(c.text), schedule, &error)) << c.what;
        EXPECT_TRUE(error.contains(QString::fromUtf8(c.says))) << c.what << ": " << error.toStdString();
        EXPECT_EQ(schedule.encoding, QStringLiteral("untouched")) << c.what;
    }
}

} // namespace
