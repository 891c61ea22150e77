#include "host/import/PfIfcScheduleReader.h"

#include "tests/support/QtPrinters.h"

#include <QFile>
#include <QRandomGenerator>

#include <gtest/gtest.h>

namespace {

const QString kSample = QStringLiteral(KVX_TEST_DATA "/models/construction_scheduling_task_IFC4.ifc");
const QByteArray kHeader = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\n";

QByteArray sample()
{
    QFile file(kSample);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A schedule with a named work schedule, a summary without dates of its own,
// escapes of every kind and a product assigned to a task (not the task to
// the product); the wall task's name is given in the file's own bytes.
QByteArray smallSchedule(const QByteArray& wallName)
{
    return kHeader + "/* a comment\n   over two lines */\n"
           "#1= IFCWORKSCHEDULE('Schedule00000000000001',$,'\\X2\\4E8C671F\\X0\\ works',$,$,$,$,$,$,$,$,$,$,.PLANNED.);\n"
           "#2= IFCTASK('TaskBlock0000000000001',$,'Block B it''s \\S\\i\\X\\E9',$,$,$,$,$,$,.F.,$,$,$);\n"
           "#3= IFCRELASSIGNSTOCONTROL('Control000000000000001',$,$,$,(#2),$,#1);\n"
           "#4= IFCRELNESTS('Nests00000000000000001',$,$,$,#2,(#10,#20));\n"
           "#10= IFCTASK('TaskSlab00000000000001',$,'\\X2\\4E8C5C42\\X0\\ slab',$,$,'B2-01',$,$,$,.F.,$,#11,.CONSTRUCTION.);\n"
           "#11= IFCTASKTIME($,$,$,$,'P5D','2026-03-02','2026-03-06',$,$,$,$,$,$,.F.,$,$,$,$,$,$);\n"
           "#20= IFCTASK('TaskWall00000000000001',$,'" + wallName + "',$,'Pour',$,$,$,$,.T.,$,#21,.USERDEFINED.);\n"
           "#21= IFCTASKTIME($,$,$,$,$,$,$,'2026-03-09T08:00:00','2026-03-10T17:00:00',$,$,$,$,$,$,$,\n"
           "  '2026-03-09T08:00:00','2026-03-11T17:00:00',$,$);\n"
           "#30= IFCWALL('Product000000000000001',$,'W1',$,$,$,$,$,$);\n"
           "#31= IFCRELASSIGNSTOPROCESS('Assign0000000000000001',$,$,$,(#30,#10),$,#20,$);\n"
           "#32= IFCPROPERTYSINGLEVALUE('Note',$,IFCTEXT('a;b) it''s'),$);\n"
           "#33= IFCCARTESIANPOINTLIST3D(((0.,0.,0.),(1.5,-2.E-3,3.)));\n"
           "ENDSEC;\nEND-ISO-10303-21;\n";
}

TEST(IfcScheduleReader, readsTheNestingDatesLinksAndProductsOfARealModel)
{
    PfSchedule schedule;
    QString error;
    ASSERT_TRUE(PfIfcScheduleReader::ReadFile(kSample, schedule, &error)) << error.toStdString();
    EXPECT_EQ(schedule.tasks.size(), 8u);
    EXPECT_EQ(schedule.encoding, QStringLiteral("UTF-8"));
    EXPECT_TRUE(schedule.projects.isEmpty()) << "its work schedule has no name";

    const PfScheduleTask* ground = schedule.Find(QStringLiteral("Ground Level"));
    ASSERT_NE(ground, nullptr);
    EXPECT_EQ(ground->id, QStringLiteral("0HSpq15hDC2R2RlJos8Ql5"));
    EXPECT_EQ(ground->Start(), QDate(2010, 9, 20));
    EXPECT_EQ(ground->Finish(), QDate(2010, 9, 24));
    EXPECT_EQ(ground->elementGlobalIds, QStringList{"3nYYuCp$XC4vhvJ2cMbpd2"}) << "its own storey";
    const PfScheduleTask* slab = schedule.Find(QStringLiteral("Slab #1"));
    EXPECT_EQ(slab->earlyStart, QDate(2010, 9, 20));
    EXPECT_EQ(slab->earlyFinish, QDate(2010, 9, 20));
    EXPECT_FALSE(slab->plannedStart.isValid());
    EXPECT_EQ(slab->elementGlobalIds, QStringList{"20WrgxqpbDtferON_k1P2X"});
    EXPECT_EQ(slab->wbsPath, (QStringList{"Ground Level", "Slab (Standard)"}));
    EXPECT_EQ(schedule.Find(QStringLiteral("Wall #4"))->wbsPath, (QStringList{"Ground Level", "Wall (Standard)"}));
    EXPECT_EQ(schedule.Find(QStringLiteral("Wall #2"))->predecessors,
              (QStringList{"3vesIabXX7guLU5lIRuXh7", "0Kq8RwbZH3afCy87RX8dso"}));
    EXPECT_EQ(schedule.Find(QStringLiteral("Wall (Standard)"))->code, QStringLiteral("IfcWallStandardCase"));

    QList<QDate> leafStarts;
    for (const PfScheduleTask& task : schedule.tasks) {
        EXPECT_EQ(task.summary, task.name.contains(QLatin1String("Level")) || task.name.contains(QLatin1String("Standard")))
            << task.name;
        if (!task.summary)
            leafStarts << task.Start();
    }
    EXPECT_EQ(leafStarts, (QList<QDate>{QDate(2010, 9, 20), QDate(2010, 9, 21), QDate(2010, 9, 22), QDate(2010, 9, 23),
                                        QDate(2010, 9, 24)}));
}

TEST(IfcScheduleReader, decodesEscapesAndTheFilesBytesAndTakesProductsAssignedToATask)
{
    for (const auto& [bytes, name, encoding] :
         {std::tuple{QByteArray("二层墙体"), QStringLiteral("二层墙体"), "UTF-8"},
          std::tuple{QByteArray("Caf\xE9 wall"), QStringLiteral("Café wall"), "ISO-8859-1"}}) {
        PfSchedule schedule;
        QString error;
        ASSERT_TRUE(PfIfcScheduleReader::Read(smallSchedule(bytes), schedule, &error)) << error.toStdString();
        EXPECT_EQ(schedule.encoding, QLatin1String(encoding));
        EXPECT_EQ(schedule.projects, QStringList{"二期 works"});
        ASSERT_EQ(schedule.tasks.size(), 3u);
        const PfScheduleTask& block = schedule.tasks[0];
        EXPECT_EQ(block.name, QStringLiteral("Block B it's éé"));
        EXPECT_TRUE(block.summary);
        EXPECT_EQ(block.Start(), QDate(2026, 3, 2)) << "the span of its tasks";
        EXPECT_EQ(block.Finish(), QDate(2026, 3, 11));
        const PfScheduleTask& slab = schedule.tasks[1];
        EXPECT_EQ(slab.name, QStringLiteral("二层 slab"));
        EXPECT_EQ(slab.code, QStringLiteral("B2-01"));
        EXPECT_EQ(slab.activityType, QStringLiteral("CONSTRUCTION"));
        EXPECT_EQ(slab.plannedFinish, QDate(2026, 3, 6)) << "a date without a time";
        EXPECT_EQ(slab.wbsPath, QStringList{block.name});
        EXPECT_EQ(slab.project, QStringLiteral("二期 works")) << "from the summary";
        EXPECT_TRUE(slab.elementGlobalIds.isEmpty()) << "a task is no product";
        const PfScheduleTask& wall = schedule.tasks[2];
        EXPECT_EQ(wall.name, name);
        EXPECT_TRUE(wall.milestone);
        EXPECT_EQ(wall.activityType, QStringLiteral("Pour")) << "user-defined: the object type";
        EXPECT_EQ(wall.actualFinish, QDate(2026, 3, 11));
        EXPECT_EQ(wall.elementGlobalIds, QStringList{"Product000000000000001"});
    }
}

TEST(IfcScheduleReader, findsWhetherAModelBringsASchedule)
{
    EXPECT_TRUE(PfIfcScheduleReader::HasSchedule(sample()));
    EXPECT_TRUE(PfIfcScheduleReader::HasSchedule(smallSchedule("Wall")));
    EXPECT_FALSE(PfIfcScheduleReader::HasSchedule(kHeader + "#1= IFCTASKTYPE('x');\n#2= IFCTASKTIME($);\n"));
    EXPECT_FALSE(PfIfcScheduleReader::HasSchedule("name,start,finish\nIFCTASK(\n"));
}

TEST(IfcScheduleReader, damagedFilesAreToldByLineAndChangeNothing)
{
    const QByteArray good = sample();
    ASSERT_FALSE(good.isEmpty());
    QByteArray noise(4096, '\0');
    QRandomGenerator random(7);
    for (char& byte : noise)
        byte = char(random.bounded(256));
    const struct {
        const char* what;
        QByteArray bytes;
        const char* says;
    } cases[] = {
        {"not STEP", "name,start,finish\n", "line 1: not a STEP file"},
        {"cut at half", good.left(good.size() / 2), "the end of the file"},
        {"no ENDSEC", good.left(good.lastIndexOf("ENDSEC;")), "no ENDSEC"},
        {"an instance without ');'", QByteArray(good).replace("#689,$);", "#689,$"), "line 295: in #690: expected ','"},
        {"a string that never ends", good.left(good.indexOf("'Wall #4',$,$,$") + 4), "line 294: in #690: a string that never"},
        {"random bytes", kHeader + noise, "line"},
        {"lists nested too deep", kHeader + "#1= IFCX(" + QByteArray(100000, '('), "line 6: in #1: lists nested deeper"},
        {"a huge instance number", kHeader + "#123456789012345678901234= IFCX();", "too large"},
        {"a TaskTime that is missing", QByteArray(good).replace("#689,$);", "#9999,$);"),
         "line 294: the TaskTime of task 'Wall #4' is no IfcTaskTime"},
        {"a TaskTime that is a task", QByteArray(good).replace("#689,$);", "#690,$);"), "is no IfcTaskTime"},
        {"a bad date", QByteArray(good).replace("'2010-09-24T08:00:00'", "'2010-13-45T08:00:00'"),
         "line 293: EarlyStart of task 'Wall #4' is no date: \"2010-13-45T08:00:00\""},
        {"a task nesting itself", QByteArray(good).replace("#615,(#621)", "#615,(#615)"),
         "line 277: task 'Slab (Standard)' nests itself"},
        {"nesting in a circle", QByteArray(good).replace("#639,(#644,", "#639,(#598,#644,"), "runs in a circle"},
        {"no tasks", QByteArray(good).replace("IFCTASK(", "IFCPROCEDURE("), "no work schedule in the file"},
    };
    for (const auto& c : cases) {
        PfSchedule schedule;
        schedule.encoding = QStringLiteral("untouched");
        schedule.tasks.resize(1);
        QString error;
        EXPECT_FALSE(PfIfcScheduleReader::Read(c.bytes, schedule, &error)) << c.what;
        EXPECT_TRUE(error.contains(QLatin1String(c.says))) << c.what << ": " << error.toStdString();
        EXPECT_FALSE(error.contains(QLatin1Char('\n'))) << c.what;
        EXPECT_EQ(schedule.encoding, QStringLiteral("untouched")) << c.what;
        EXPECT_EQ(schedule.tasks.size(), 1u) << c.what;
    }
}

} // namespace
