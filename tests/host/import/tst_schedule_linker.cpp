#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/import/PfDraftSchedule.h"
#include "host/import/PfScheduleLinker.h"
#include "host/model/KVX3DElementObject.h"

#include "tests/support/QtPrinters.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>

namespace {

// Two storeys of a small building, each element with what an IFC import
// gives it.
class ScheduleLinker : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        const struct {
            const char *name, *storey, *type, *globalId, *mark;
        } elements[] = {
            {"Footing F1", "Level 1", "IfcFooting", "G-F1", ""},
            {"L1-W1", "Level 1", "IfcWallStandardCase", "G-W11", "W-01"},
            {"L1-S1", "Level 1", "IfcSlab", "G-S1", ""},
            {"L2-W1", "Level 2", "IfcWallStandardCase", "G-W21", "W-02"},
            {"L2-W2", "Level 2", "IfcWall", "G-W22", ""},
            {"L2-S1", "Level 2", "IfcSlab", "G-S2", ""},
            {"Roof", "Level 2", "IfcRoof", "G-R", ""},
        };
        for (const auto& e : elements) {
            auto* element = new KVX3DElementObject();
            element->SetName(QString::fromUtf8(e.name).toStdWString());
            element->SetProperty(PfDbElement::kStoreyProperty, QString::fromUtf8(e.storey));
            element->SetProperty(PfDbElement::kElevationProperty, e.storey[6] == '1' ? "0" : "3000");
            element->SetProperty(PfDbElement::kTypeProperty, QString::fromUtf8(e.type));
            element->SetProperty(PfDbElement::kGlobalIdProperty, QString::fromUtf8(e.globalId));
            if (*e.mark)
                element->SetProperty(QStringLiteral("Mark"), QString::fromUtf8(e.mark));
            document->GetDatabase()->GetModelSpace()->Add(element);
            names[element->GetHandle()] = QString::fromUtf8(e.name);
        }
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }

    static PfScheduleTask task(const QString& name, int day, int days = 1)
    {
        PfScheduleTask task;
        task.id = name;
        task.name = name;
        task.plannedStart = QDate(2026, 3, 2).addDays(day);
        task.plannedFinish = task.plannedStart.addDays(days - 1);
        return task;
    }
    PfScheduleLinkRules rules(const QString& text) const
    {
        PfScheduleLinkRules read = PfScheduleLinkRules::Defaults();
        QString error;
        EXPECT_TRUE(read.Parse(text, QString(), &error)) << error;
        return read;
    }
    // Each task's element names, sorted, joined.
    std::map<QString, QString> linked(const PfSchedule& schedule, const PfScheduleLinkRules& rules)
    {
        records = PfScheduleLinker(document->GetDatabase()).Link(schedule, rules, report);
        std::map<QString, QStringList> byTask;
        for (const PfTaskRecord& record : records)
            byTask[record.taskName] << names[record.element];
        std::map<QString, QString> joined;
        for (auto& [taskName, elements] : byTask) {
            elements.sort();
            joined[taskName] = elements.join(u',');
        }
        return joined;
    }

    PfDbDocument* document = nullptr;
    std::map<PfDbHandle, QString> names;
    std::vector<PfTaskRecord> records;
    PfScheduleLinker::Report report;
};

TEST_F(ScheduleLinker, eachRuleFindsItsElements)
{
    const struct {
        const char* rule;
        PfScheduleTask task;
        const char* elements;
    } rows[] = {
        {"storey = wbs", [] { auto t = task("Structure", 0); t.wbsPath = QStringList{"Block A", "LEVEL 2"}; return t; }(),
         "L2-S1,L2-W1,L2-W2,Roof"},
        {"storey in name", task("Pour the Level 1 slab", 0), "Footing F1,L1-S1,L1-W1"},
        {"property Mark = code", [] { auto t = task("Wall", 0); t.code = "w-02"; return t; }(), "L2-W1"},
        {"name prefix code", [] { auto t = task("Walls", 0); t.code = "L2-W"; return t; }(), "L2-W1,L2-W2"},
        {"type pattern \"Ifc{name}*\"", task("Wall", 0), "L1-W1,L2-W1,L2-W2"},
        {"storey = wbs and type = activity",
         [] { auto t = task("Slab", 0); t.wbsPath = QStringList{"Level 1"}; t.activityType = "IfcSlab"; return t; }(), "L1-S1"},
        {"link T1 G-R G-F1", [] { auto t = task("Odd pair", 0); t.code = "T1"; return t; }(), "Footing F1,Roof"},
        {"", [] { auto t = task("Assigned", 0); t.elementGlobalIds = QStringList{"G-S2"}; return t; }(), "L2-S1"},
        {"", [] { auto t = task("Filtered", 0); t.elementFilter = "L1-*|footing*"; return t; }(),
         "Footing F1,L1-S1,L1-W1"},
        {"", task("L2-S1", 0), "L2-S1"}, // by default a task named after an element builds it
    };
    for (const auto& row : rows) {
        PfSchedule schedule;
        schedule.tasks = {row.task};
        const auto links = linked(schedule, rules(QString::fromUtf8(row.rule)));
        EXPECT_EQ(links.count(row.task.name) ? links.at(row.task.name) : QString(), QString::fromUtf8(row.elements))
            << row.rule;
    }
}

TEST_F(ScheduleLinker, kindsClaimsAndTheReport)
{
    PfSchedule schedule;
    PfScheduleTask level = task("Level 2", 0);
    level.summary = true;
    PfScheduleTask early = task("Level 1", 0, 3), late = task("Walls Level 1", 1), demolish = task("拆除 L1-W1", 9),
                   handover = task("Roof", 12), undated = task("Fit-out", 0), nothing = task("Landscaping", 0);
    late.code = "L1-W1"; // claims by a later rule (name = code) than Level 1's storey rule
    demolish.code = "L1-W1";
    handover.milestone = true;
    undated.plannedStart = undated.plannedFinish = QDate();
    schedule.tasks = {level, early, late, demolish, handover, undated, nothing};
    const PfScheduleLinkRules withLayers = rules(QStringLiteral("layered IfcSlab 150"));
    // Level 1's storey rule comes before the rule by element name, so Level
    // 1 keeps the wall; the demolition stands beside its construction.
    const auto links = linked(schedule, withLayers);
    EXPECT_EQ(links.at("Level 1"), "Footing F1,L1-S1,L1-W1");
    EXPECT_EQ(links.count("Walls Level 1"), 0u);
    EXPECT_EQ(links.at("拆除 L1-W1"), "L1-W1");
    EXPECT_EQ(links.at("Roof"), "Roof");
    EXPECT_EQ(links.count("Level 2"), 0u) << "a summary groups, it does not build";
    std::map<QString, PfTaskRecord::Kind> kinds;
    for (const PfTaskRecord& record : records)
        kinds[names[record.element] + "/" + record.taskName] = record.kind;
    EXPECT_EQ(kinds["L1-S1/Level 1"], PfTaskRecord::Layered);
    EXPECT_EQ(kinds["L1-W1/Level 1"], PfTaskRecord::Construction);
    EXPECT_EQ(kinds["L1-W1/拆除 L1-W1"], PfTaskRecord::Demolition);
    EXPECT_EQ(kinds["Roof/Roof"], PfTaskRecord::Emphasis);
    const PfTaskRecord& slab = *std::find_if(records.begin(), records.end(),
                                             [this](const PfTaskRecord& r) { return names[r.element] == "L1-S1"; });
    EXPECT_EQ(slab.start, QDate(2026, 3, 2));
    EXPECT_EQ(slab.finish, QDate(2026, 3, 4));
    EXPECT_EQ(slab.layerHeight, 150.0);

    EXPECT_EQ(report.tasks, 6);
    EXPECT_EQ(report.summaries, 1);
    EXPECT_EQ(report.tasksLinked, 4) << "Walls Level 1 linked, though it lost its element";
    EXPECT_EQ(report.tasksWithoutElements, QStringList{"Landscaping"});
    EXPECT_EQ(report.tasksWithoutDates, QStringList{"Fit-out"});
    EXPECT_EQ(report.elementsLinked, 4);
    EXPECT_EQ(report.elementsWithoutTask, (QStringList{"L2-W1", "L2-W2", "L2-S1"}));
    ASSERT_EQ(report.contests.size(), 1u);
    EXPECT_EQ(report.contests[0].element, "L1-W1");
    EXPECT_EQ(report.contests[0].tasks, (QStringList{"Level 1", "L1-W1 Walls Level 1"}));
    const QString text = report.Text();
    EXPECT_TRUE(text.contains("linked: 4 of 6 tasks, 4 of 7 elements, 5 records")) << text;
    EXPECT_TRUE(text.contains("L1-W1 (Level 1 wins over L1-W1 Walls Level 1)")) << text;

    // Within one rule the task that starts first builds the element.
    schedule.tasks = {task("Level 1 again", 5), task("Level 1", 2)};
    schedule.tasks[0].name = "Level 1";
    schedule.tasks[0].id = "second";
    linked(schedule, rules(QString()));
    for (const PfTaskRecord& record : records)
        EXPECT_EQ(record.taskId, "Level 1") << "the task of 4 March starts before the one of the 7th";
}

TEST_F(ScheduleLinker, badRulesAreToldByLineAndChangeNothing)
{
    QTemporaryDir folder;
    const struct {
        const char* text;
        const char* message;
    } rows[] = {
        {"storey = wbs\nfloor = wbs", "line 2: \"floor\" is no element field"},
        {"storey == wbs", "line 1: \"==\" is no comparison"},
        {"storey = level", "line 1: \"level\" is no task field"},
        {"name pattern {code}*", "line 1: pattern wants a quoted pattern"},
        {"name pattern \"{code}*", "line 1: a quote is not closed"},
        {"storey = wbs type = activity", "line 1: \"type\" after a condition"},
        {"property = code", "line 1: \"code\" is no comparison"},
        {"# fine\nlink A1", "line 2: link wants a task code"},
        {"layered IfcSlab 0", "line 1: a layer must be higher than 0 mm"},
        {"table missing.csv", "line 1: table missing.csv:"},
    };
    for (const auto& row : rows) {
        PfScheduleLinkRules read = PfScheduleLinkRules::Defaults();
        const std::size_t before = read.rules.size();
        QString error;
        EXPECT_FALSE(read.Parse(QString::fromUtf8(row.text), folder.path(), &error)) << row.text;
        EXPECT_TRUE(error.startsWith(QString::fromUtf8(row.message))) << error;
        EXPECT_EQ(read.rules.size(), before) << row.text;
    }
}

TEST_F(ScheduleLinker, aTableFileBesideTheRules)
{
    QTemporaryDir folder;
    QFile table(folder.filePath("links.csv"));
    ASSERT_TRUE(table.open(QIODevice::WriteOnly));
    table.write("A1010;G-W11 G-W21\n\nA1020,G-R\n");
    table.close();
    QFile rulesFile(folder.filePath("rules.txt"));
    ASSERT_TRUE(rulesFile.open(QIODevice::WriteOnly));
    rulesFile.write("# explicit links only\ntable links.csv\n");
    rulesFile.close();
    PfScheduleLinkRules read;
    QString error;
    ASSERT_TRUE(read.ReadFile(rulesFile.fileName(), &error)) << error;
    PfSchedule schedule;
    schedule.tasks = {task("Walls", 0), task("Roof sheets", 4)};
    schedule.tasks[0].code = "A1010";
    schedule.tasks[1].code = "a1020";
    const auto links = linked(schedule, read);
    EXPECT_EQ(links.at("Walls"), "L1-W1,L2-W1");
    EXPECT_EQ(links.at("Roof sheets"), "Roof");
}

TEST_F(ScheduleLinker, aDraftBuildsFoundationsFirstStoreyByStoreyAndRoofsLast)
{
    const PfSchedule draft = PfDraftSchedule::Make(document->GetDatabase(), QDate(2026, 3, 2));
    QStringList order;
    for (const PfScheduleTask& task : draft.tasks) {
        EXPECT_TRUE(task.name.startsWith(QStringLiteral("草稿"))) << task.name;
        order << task.name.mid(3);
    }
    EXPECT_EQ(order, (QStringList{"Level 1 IfcFooting", "Level 1 IfcWallStandardCase", "Level 1 IfcSlab",
                                  "Level 2 IfcWall", "Level 2 IfcWallStandardCase", "Level 2 IfcSlab",
                                  "Level 2 IfcRoof"}));
    EXPECT_EQ(draft.tasks.back().Finish(), QDate(2026, 3, 8));
    const auto links = linked(draft, PfScheduleLinkRules::Defaults());
    EXPECT_EQ(report.elementsLinked, 7);
    EXPECT_TRUE(report.contests.empty());
}

} // namespace
