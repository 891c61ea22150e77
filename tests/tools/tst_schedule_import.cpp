#include "animation/KVXAnimatorManager.h"
#include "animation/KVXScheduleVideo.h"
#include "animation/KVXTaskRecords.h"
#include "host/app/KvxScheduleImport.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/vpe/geometry/CBody.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/VideoProbe.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

const QString kModels = QStringLiteral(KVX_TEST_DATA "/models/");

// Three storeys of a tower, one element each, and a schedule by storey
// written as a planner's CSV table.
class ScheduleImport : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        for (int storey = 1; storey <= 3; ++storey) {
            auto* element = new KVX3DElementObject();
            element->SetName(QStringLiteral("Floor %1").arg(storey).toStdWString());
            element->SetProperty(PfDbElement::kStoreyProperty, QStringLiteral("Level %1").arg(storey));
            element->SetProperty(PfDbElement::kTypeProperty, QStringLiteral("IfcSlab"));
            const double bottom = (storey - 1) * 3000.0;
            element->AddBody(vpe::CBody::CreateExtrusion({{0, 0}, {8000, 0}, {8000, 6000}, {0, 6000}}, bottom,
                                                         bottom + 3000.0));
            document->GetDatabase()->GetModelSpace()->Add(element);
        }
        PfGsModelView::Attach(document);
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }

    bool import(const QByteArray& csv, QString* error = nullptr)
    {
        QFile file(folder.filePath("schedule.csv"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(csv);
        file.close();
        KvxScheduleImport::Request request;
        request.schedule = file.fileName();
        const auto make = [](const QStringList& words, QString& answer) {
            return KVXTaskRecords::RunCommand(words, &answer) == Pfad::eOk;
        };
        return KvxScheduleImport::Run(document, request, make, result, error);
    }
    // Each record as "element task start..end kind".
    QStringList records() const
    {
        QStringList lines;
        for (const KVXAnimation* record : KVXAnimatorManager::getInstance()->getAnimationVector())
            lines << QStringLiteral("%1 %2 %3..%4 %5")
                         .arg(QString::fromStdWString(
                                  PfDbElement::Cast(document->GetItem(record->getObjId()))->GetName()),
                              record->Property(PfTaskRecord::kTaskIdProperty),
                              record->getStartDate().toString(Qt::ISODate),
                              record->getEndDate().toString(Qt::ISODate))
                         .arg(record->getAnimationType());
        lines.sort();
        return lines;
    }

    QTemporaryDir folder;
    PfDbDocument* document = nullptr;
    KvxScheduleImport::Result result;
};

TEST_F(ScheduleImport, recordsComeInOneUndoStepAndAChangedScheduleMovesThem)
{
    ASSERT_TRUE(import("name,start,finish,code\nLevel 1,2026-03-02,2026-03-04,A1\nLevel 2,2026-03-05,2026-03-06,A2\n"
                       "Level 3,2026-03-09,2026-03-09,A3\n拆除 Level 3,2026-03-20,2026-03-20,Floor 3\n"));
    const QStringList first{"Floor 1 A1 2026-03-02..2026-03-05 0", "Floor 2 A2 2026-03-05..2026-03-07 0",
                            "Floor 3 A3 2026-03-09..2026-03-10 0", "Floor 3 Floor 3 2026-03-20..2026-03-21 1"};
    EXPECT_EQ(records(), first);
    EXPECT_EQ(result.records, (KVXTaskRecords::Outcome{4, 0, 0}.Text()));
    PfDbTransactionManager* steps = document->GetDatabase()->TransactionManager();
    EXPECT_EQ(steps->UndoName(), KVXTaskRecords::kUndoName);
    steps->Undo();
    EXPECT_TRUE(records().isEmpty()) << "undo takes the whole import back";
    steps->Redo();
    EXPECT_EQ(records(), first);

    // Level 2 slips two days and Level 1 is renamed: records move, none is added.
    ASSERT_TRUE(import("name,start,finish,code\nLevel 1,2026-03-02,2026-03-04,A1\nLevel 2,2026-03-09,2026-03-10,A2\n"
                       "Level 3,2026-03-09,2026-03-09,A3\n拆除 Level 3,2026-03-20,2026-03-20,Floor 3\n"));
    EXPECT_EQ(result.records, (KVXTaskRecords::Outcome{0, 1, 3}.Text()));
    EXPECT_EQ(records().value(1), "Floor 2 A2 2026-03-09..2026-03-11 0");
    EXPECT_EQ(records().size(), 4);
    steps->Undo();
    EXPECT_EQ(records(), first) << "undo puts the old dates back";
}

TEST_F(ScheduleImport, nothingChangesWhenNothingLinksOrAnElementIsGone)
{
    QString error;
    EXPECT_FALSE(import("name,start,finish\nLandscaping,2026-03-02,2026-03-04\n", &error));
    EXPECT_TRUE(error.contains("no task could be linked")) << error;
    EXPECT_EQ(result.report.tasksWithoutElements, QStringList{"Landscaping"});
    PfTaskRecord ghost;
    ghost.element = 999999;
    ghost.start = ghost.finish = QDate(2026, 3, 2);
    ghost.taskId = ghost.taskName = "Ghost";
    QString answer;
    EXPECT_EQ(KVXTaskRecords::RunCommand({ghost.ToWord()}, &answer), Pfad::eNotApplicable);
    EXPECT_TRUE(answer.contains("does not have")) << answer;
    EXPECT_EQ(KVXTaskRecords::RunCommand({"1\tbuilt\t2026-03-02"}, &answer), Pfad::eInvalidInput);
    EXPECT_TRUE(records().isEmpty());
}

// The share of pixels whose colour changed clearly: what compression leaves
// along edges does not count.
double changedShare(const QImage& a, const QImage& b)
{
    const QImage x = a.convertToFormat(QImage::Format_RGB32), y = b.convertToFormat(QImage::Format_RGB32);
    if (x.isNull() || x.size() != y.size())
        return 1.0;
    int changed = 0;
    for (int row = 0; row < x.height(); ++row)
        for (int column = 0; column < x.width(); ++column) {
            const QRgb p = x.pixel(column, row), q = y.pixel(column, row);
            changed += std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                 std::abs(qBlue(p) - qBlue(q))}) > 48;
        }
    return double(changed) / (x.width() * x.height());
}

struct Answer {
    int code;
    QString printed;
};

Answer kvxhost(const QStringList& arguments)
{
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(QStringLiteral(KVX_HOST_PROGRAM), arguments);
    program.waitForFinished(240000);
    return {program.exitCode(), QString::fromUtf8(program.readAll())};
}

TEST(DuplexByStorey, everyElementIsLinkedOnceAndASecondImportChangesNothing)
{
    QTemporaryDir folder;
    const QString site = folder.filePath("duplex.kvx");
    const QString schedule = QStringLiteral(KVX_TEST_DATA "/schedules/duplex-by-storey.csv");
    ASSERT_EQ(kvxhost({"import", site, kModels + "duplex.ifc"}).code, 0);
    const Answer linked = kvxhost({"schedule", site, schedule});
    ASSERT_EQ(linked.code, 0) << linked.printed;
    for (const char* line : {"tasks: 4 to animate, 0 summaries", "linked: 4 of 4 tasks, 215 of 215 elements, 215 records",
                             "elements without a task: 0", "elements claimed by several tasks: 0",
                             "records: 215 added, 0 moved"})
        EXPECT_TRUE(linked.printed.contains(QLatin1String(line))) << line << "\n" << linked.printed;
    const Answer again = kvxhost({"schedule", site, schedule});
    EXPECT_TRUE(again.printed.contains("records: 0 added, 0 moved to the schedule's new dates, 215 unchanged"))
        << again.printed;
    const Answer broken = kvxhost({"schedule", site, kModels + "duplex.ifc", "--out", folder.filePath("none.kvx")});
    EXPECT_EQ(broken.code, 1) << "the duplex has no work schedule";
    EXPECT_FALSE(QFile::exists(folder.filePath("none.kvx")));
}

// The whole path on the IFC4 scheduling example, through the real program
// (the model is read in a child process of it).
TEST(FourDFilm, theModelsOwnScheduleBuildsItsFiveElementsDayByDay)
{
    QTemporaryDir folder;
    const QString film = folder.filePath("4d.mp4");
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(QStringLiteral(KVX_HOST_PROGRAM),
                  {"4d", kModels + "construction_scheduling_task_IFC4.ifc", "--out", film, "--size", "320x180",
                   "--no-caption"});
    ASSERT_TRUE(program.waitForFinished(240000));
    const QString printed = QString::fromUtf8(program.readAll());
    ASSERT_EQ(program.exitCode(), 0) << printed;
    for (const char* line : {"== model", "schedule: the model's own work schedule",
                             "linked: 5 of 5 tasks, 5 of 5 elements, 5 records", "== check", "== film", "== done"})
        EXPECT_TRUE(printed.contains(QLatin1String(line))) << line << "\n" << printed;
    // 20 to 24 September 2010: five days of a second, and a second more.
    EXPECT_EQ(probeVideo(film), QStringLiteral("codec_name=h264\nwidth=320\nheight=180\nr_frame_rate=24/1\n"
                                               "nb_read_frames=%1\n")
                                    .arg(KVXScheduleVideo::FrameCount(5.0)));
    // Each day's end shows more than the day before: one element a day (the
    // slab of the first day is seen from above, its rising cap hiding most
    // of the change).
    QImage before = decodedFrame(film, 0, folder.path());
    for (int day = 1; day <= 5; ++day) {
        // Two frames into the next day, when the day's element stands whole.
        const QImage after = decodedFrame(film, day * 24 + 2, folder.path());
        EXPECT_GT(changedShare(before, after), 0.005) << "day " << day;
        before = after;
    }
    EXPECT_LT(changedShare(before, decodedFrame(film, KVXScheduleVideo::FrameCount(5.0) - 1, folder.path())), 0.001)
        << "finished after day 5";
}

} // namespace
